#ifndef VYKELDEV_DOCTOR_LEGACYCHECK_H
#define VYKELDEV_DOCTOR_LEGACYCHECK_H

#include "doctor/Report.h"

namespace vykeldev::doctor {

/// Reads the legacy alias file as an alias transfer would, without changing anything, and adds a finding for
/// whatever cannot be read, handed over or saved. Completes `report.legacy`, whose path is known. To be
/// called under the transfers' lock: an open file is in the way of one. `folderWritable`: files can be made
/// beside it.
void checkLegacyFile(Report& report, bool folderWritable);

} // namespace vykeldev::doctor

#endif
