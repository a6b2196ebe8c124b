#ifndef VYKELDEV_SUPPORT_PATHS_H
#define VYKELDEV_SUPPORT_PATHS_H

#include <string>

/// Paths in UTF-8.
namespace vykeldev {

/// True when a path names the same file whatever the current folder is.
bool isAbsolutePath(const std::string& path) noexcept;

/// `path` made absolute against the current folder. Throws Failure.
std::string absolutePath(const std::string& path);

} // namespace vykeldev

#endif
