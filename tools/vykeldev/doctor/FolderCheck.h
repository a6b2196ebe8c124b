#ifndef VYKELDEV_DOCTOR_FOLDERCHECK_H
#define VYKELDEV_DOCTOR_FOLDERCHECK_H

#include "doctor/Progress.h"
#include "doctor/Report.h"

namespace vykeldev::doctor {

/// Looks at the folder of the lock files and at both locks, each of which it waits for up to two seconds.
/// Makes a missing lock file, as every refresh does. Fills `report.folder`, `report.locks` and
/// `report.findings`.
void checkFolder(Report& report, Progress& progress);

} // namespace vykeldev::doctor

#endif
