#ifndef VYKELDEV_COMMANDS_EDITCOMMANDS_H
#define VYKELDEV_COMMANDS_EDITCOMMANDS_H

#include "output/Command.h"

namespace vykeldev {

/// The commands `alias` and `renumber`: describe them and their options to `app`. When the user gives one,
/// its work is put into `chosen`, which must outlive the parsing.
void addAliasCommand(CLI::App& app, Run& chosen);
void addRenumberCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
