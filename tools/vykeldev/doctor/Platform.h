#ifndef VYKELDEV_DOCTOR_PLATFORM_H
#define VYKELDEV_DOCTOR_PLATFORM_H

#include "doctor/LibraryImage.h"
#include <string>
#include <string_view>

/// What the doctor does differently on Windows (PlatformWindows.cpp) and on the host (PlatformHost.cpp).
/// Paths are UTF-8.
namespace vykeldev::doctor {

/// Reads the headers of a library of this system.
LibraryImage readNativeImage(std::string_view bytes);

/// Whether the system's loader finds a library that `image`, a file in `folder`, asks for by that name.
bool isImportFound(const std::string& name, const LibraryImage& image, const std::string& folder);

/// Keeps the system from showing, asking or storing anything when this process crashes.
void silenceCrashes() noexcept;

/// Whether standard error is a terminal.
bool isErrorTerminal() noexcept;

/// The system's name and version; the version that a library's file carries, or an empty text.
std::string systemVersion();
std::string fileVersion(const std::string& path);

} // namespace vykeldev::doctor

#endif
