#ifndef VYKELDEV_COMMANDS_LISTCOMMAND_H
#define VYKELDEV_COMMANDS_LISTCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `list`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addListCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
