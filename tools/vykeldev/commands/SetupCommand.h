#ifndef VYKELDEV_COMMANDS_SETUPCOMMAND_H
#define VYKELDEV_COMMANDS_SETUPCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `setup`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addSetupCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
