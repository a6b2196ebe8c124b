#ifndef VYKELDEV_COMMANDS_ALIASESCOMMAND_H
#define VYKELDEV_COMMANDS_ALIASESCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `aliases`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addAliasesCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
