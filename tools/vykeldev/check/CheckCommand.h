#ifndef VYKELDEV_CHECK_CHECKCOMMAND_H
#define VYKELDEV_CHECK_CHECKCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `check`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addCheckCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
