#ifndef VYKELDEV_DOCTOR_DOCTORCOMMAND_H
#define VYKELDEV_DOCTOR_DOCTORCOMMAND_H

#include "output/Command.h"

namespace vykeldev {

/// The command `doctor`: describes it and its options to `app`. When the user gives it, its work is put into
/// `chosen`, which must outlive the parsing.
void addDoctorCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
