#ifndef VYKELDEV_DOCTOR_FOLDERCHECK_H
#define VYKELDEV_DOCTOR_FOLDERCHECK_H

#include "doctor/Progress.h"
#include "doctor/Report.h"

namespace vykeldev::doctor {

/// Checks the folder of the lock files and both locks, waiting for each up to two seconds; while it holds the
/// second it checks the legacy alias file. Makes a missing lock file, as every refresh does, and for a moment
/// a file of its own. Fills `report.folder`, `report.locks`, `report.legacy` and `report.findings`.
void checkFolder(Report& report, Progress& progress);

} // namespace vykeldev::doctor

#endif
