#ifndef VYKELDEV_MACHINE_FOLDERCHECK_H
#define VYKELDEV_MACHINE_FOLDERCHECK_H

#include "machine/FolderReport.h"
#include "output/Progress.h"

namespace vykeldev {

/// Checks the folder of the lock files and both locks, waiting for each up to two seconds; while it holds the
/// second it checks the legacy alias file. Makes a missing lock file, as every refresh does, and for a moment
/// a file of its own. Fills the report, and adds a finding for everything that is wrong.
void checkFolder(FolderReport& report, Progress& progress);

} // namespace vykeldev

#endif
