#ifndef VYKELDEV_SYSTEM_LOADER_H
#define VYKELDEV_SYSTEM_LOADER_H

#include "machine/LibraryImage.h"
#include <optional>
#include <string>
#include <string_view>

/// What the system's loader makes of a library's file.
namespace vykeldev::doctor {

/// Reads the headers of a library of this system. None on the host: there the loader is the only judge.
std::optional<LibraryImage> readNativeImage(std::string_view bytes);

/// Where the system's loader finds a library that another one imports by that name. An empty path: it is
/// loaded already, or it belongs to the system. None: it is not found.
std::optional<std::string> findImport(const std::string& name);

} // namespace vykeldev::doctor

#endif
