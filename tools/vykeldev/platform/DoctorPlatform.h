#ifndef VYKELDEV_PLATFORM_DOCTORPLATFORM_H
#define VYKELDEV_PLATFORM_DOCTORPLATFORM_H

#include "doctor/LibraryImage.h"
#include "pellumkelddk/user/FileLock.h"
#include <optional>
#include <string>
#include <string_view>

/// What the doctor does differently on Windows (PlatformWindows.cpp) and on the host (PlatformHost.cpp).
/// Paths are UTF-8.
namespace vykeldev::doctor {

/// Reads the headers of a library of this system. None on the host: there the loader is the only judge.
std::optional<LibraryImage> readNativeImage(std::string_view bytes);

/// Where the system's loader finds a library that another one imports by that name. An empty path: it is
/// loaded already, or the system's own. Nothing: it is not found.
std::optional<std::string> findImport(const std::string& name);

/// False when opening `path`, which is absolute, could wait for a device or a pipe.
bool isOrdinaryFile(const std::string& path);

/// A text that two paths of one file have in common; empty when the system does not tell it.
std::string fileIdentity(const std::string& path);

/// Makes a file that is gone again at once. False, with the system's last error, when that fails.
bool makeTemporaryFile(const std::string& path);

/// Standard output once more, which stays open when somebody closes the original.
vykel::FileStream duplicateOutput();

/// Keeps the system from showing, asking or storing anything when this process crashes or meets a bad file.
void silenceCrashes() noexcept;

/// Whether standard error is a terminal.
bool isErrorTerminal() noexcept;

/// The system's name and version; the version that a library's file carries, or an empty text.
std::string systemVersion();
std::string fileVersion(const std::string& path);

} // namespace vykeldev::doctor

#endif
