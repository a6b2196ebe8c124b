#ifndef VYKELDEV_SYSTEM_PATHS_H
#define VYKELDEV_SYSTEM_PATHS_H

#include <cstddef>
#include <string>
#include <windows.h>

/// Paths, in UTF-8.
namespace vykeldev {

/// No file has a longer path.
constexpr std::size_t maxPathBytes = 32000;

/// `path`, made absolute against the current folder. Throws Failure.
std::string absolutePath(const std::string& path);

/// Whether a path means the same file whatever the current folder is.
bool isAbsolutePath(const std::string& path) noexcept;

/// Whether there is a file or folder of that name with one of these attributes of the system.
bool hasAttribute(const std::string& path, DWORD attributes);

/// Whether there is a folder of that name.
inline bool isFolder(const std::string& path) {
    return hasAttribute(path, FILE_ATTRIBUTE_DIRECTORY);
}

/// The reason why no plug-in can be loaded from `path`, as far as its name shows it, or an empty text.
std::string pathProblem(const std::string& path);

} // namespace vykeldev

#endif
