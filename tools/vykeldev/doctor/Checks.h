#ifndef VYKELDEV_DOCTOR_CHECKS_H
#define VYKELDEV_DOCTOR_CHECKS_H

#include "doctor/Report.h"
#include "output/Progress.h"
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <windows.h>

/// What the doctor looks at. Each check completes its part of the report and adds a finding for everything
/// that is wrong.
namespace vykeldev::doctor {

/// PluginCheck.cpp: examines every registered plug-in, each within `limit`. Fills `report.plugins`.
void checkPlugins(Report& report, std::chrono::milliseconds limit, Progress& progress);

/// PluginCheck.cpp: counts the registered plug-ins. None, with a finding, when the registry key cannot be
/// read.
std::optional<std::uint32_t> countPlugins(Findings& findings);

/// Examination.cpp: examines a plug-in whose name and path are known: looks at its file, then probes it
/// within `limit`. Completes the account.
void examine(PluginAccount& plugin, std::chrono::milliseconds limit, Findings& findings);

/// Examination.cpp: why the file at a path is no plug-in, as far as its headers show it, or an empty text. On
/// the host, only why it cannot be read.
std::string describeFlaw(const std::string& path);

/// FolderCheck.cpp: checks the folder of the lock files and both locks, waiting for each up to two seconds;
/// while it holds the second it checks the legacy alias file. Makes a missing lock file, as every refresh
/// does, and for a moment a file of its own. Fills `report.folder`, `report.locks` and `report.legacy`.
void checkFolder(Report& report, Progress& progress);

/// LegacyCheck.cpp: reads the legacy alias file as an alias transfer does, without changing anything, and
/// looks for everything that cannot be read, handed over or saved. Completes `report.legacy`, whose path is
/// known. Call it under the transfers' lock: an open file would make the save of a transfer fail.
/// `folderWritable`: files can be made beside it.
void checkLegacyFile(Report& report, bool folderWritable);

/// FolderCheck.cpp: what to do about a file in the folder that cannot be opened, by the system's error.
std::string remedyOfOpening(DWORD error);

} // namespace vykeldev::doctor

#endif
