#ifndef VYKELDEV_COMMANDS_WATCHCOMMAND_H
#define VYKELDEV_COMMANDS_WATCHCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `watch`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addWatchCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
