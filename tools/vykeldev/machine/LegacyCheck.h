#ifndef VYKELDEV_MACHINE_LEGACYCHECK_H
#define VYKELDEV_MACHINE_LEGACYCHECK_H

#include "machine/FolderReport.h"
#include <string>
#include <windows.h>

namespace vykeldev {

/// Reads the legacy alias file as an alias transfer does, without changing anything, and looks for everything
/// that cannot be read, handed over or saved. Completes `report.legacy`, whose path is known. Call it under
/// the transfers' lock: an open file would make the save of a transfer fail. `folderWritable`: files can be
/// made beside it.
void checkLegacyFile(FolderReport& report, bool folderWritable);

/// What to do about a file in the folder that cannot be opened, by the system's error.
std::string remedyOfOpening(DWORD error);

} // namespace vykeldev

#endif
