#ifndef VYKELDEV_DOCTOR_LEGACYCHECK_H
#define VYKELDEV_DOCTOR_LEGACYCHECK_H

#include "doctor/Report.h"

namespace vykeldev::doctor {

/// Reads the legacy alias file as an alias transfer does, without changing anything, and adds a finding for
/// everything that cannot be read, handed over or saved. Completes `report.legacy`, whose path is known. Call
/// it under the transfers' lock: an open file would make the save of a transfer fail. `folderWritable`: files
/// can be made beside it.
void checkLegacyFile(Report& report, bool folderWritable);

} // namespace vykeldev::doctor

#endif
