#ifndef VYKELDEV_DOCTOR_LEGACYCHECK_H
#define VYKELDEV_DOCTOR_LEGACYCHECK_H

#include "doctor/Report.h"

namespace vykeldev::doctor {

/// Reads the legacy alias file as an alias transfer would, without changing anything, and adds a finding for
/// whatever cannot be read or can never be handed over. Fills `report.legacy`; does nothing when the folder
/// of the file is unknown.
void checkLegacyFile(Report& report);

} // namespace vykeldev::doctor

#endif
