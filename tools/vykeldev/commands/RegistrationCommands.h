#ifndef VYKELDEV_COMMANDS_REGISTRATIONCOMMANDS_H
#define VYKELDEV_COMMANDS_REGISTRATIONCOMMANDS_H

#include "output/Command.h"

namespace vykeldev {

/// The commands `plugins`, `register` and `unregister`: describe them and their options to `app`. When the
/// user gives one, its work is put into `chosen`, which must outlive the parsing.
void addPluginsCommand(CLI::App& app, Run& chosen);
void addRegisterCommand(CLI::App& app, Run& chosen);
void addUnregisterCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
