#ifndef VYKELDEV_COMMANDS_WAITCOMMAND_H
#define VYKELDEV_COMMANDS_WAITCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `wait`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addWaitCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
