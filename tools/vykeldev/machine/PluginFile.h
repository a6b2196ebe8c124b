#ifndef VYKELDEV_MACHINE_PLUGINFILE_H
#define VYKELDEV_MACHINE_PLUGINFILE_H

#include "machine/Finding.h"
#include "machine/LibraryImage.h"
#include "output/Json.h"
#include <optional>
#include <string>

/// The file of a plug-in, looked at without loading it or what it imports. Paths and texts are UTF-8.
namespace vykeldev {

/// The steps of a plug-in from its registration to its devices and back.
enum class Step {
    RegistryValue,
    Path,
    File,
    Architecture,
    Dependency,
    Load,
    EntryPoint,
    Initialise,
    List,
    Refresh,
    Unload
};
constexpr const char* stepNames[] = {"registry value", "path",    "file",        "architecture",
                                     "dependency",     "load",    "entry point", "initialise",
                                     "list",           "refresh", "unload"};
constexpr const char* nameOf(Step step) noexcept {
    return stepNames[static_cast<std::size_t>(step)];
}

/// Why a plug-in cannot be used.
struct Obstacle {
    const FindingKind* kind;
    Step step;
    std::string detail;
    const FindingKind* remedyOf = nullptr; ///< Whose remedy helps here; null: that of `kind`.
};

/// What the file at a path says of itself: "version", "maker" and when it was "written"; each may be null.
Json factsOf(const std::string& path);

/// Looks at the file at a path of the registry and for the libraries that it imports. Returns why a load will
/// fail, or nothing. Fills `image` when the headers can be read.
std::optional<Obstacle> lookAtFile(const std::string& path, std::optional<LibraryImage>& image);

/// What is odd about a path in the registry, as "; ..." or nothing.
std::string pathOddity(const std::string& path);

/// Why the file at a path is no plug-in, as far as its headers show it, or an empty text. On the host, only
/// why it cannot be read.
std::string describeFlaw(const std::string& path);

/// Which libraries cannot be found or used that the library at an absolute path imports, directly or not; or
/// why the file is no library for this machine. Empty when there is nothing to say.
std::string describeBadDependencies(const std::string& path);

} // namespace vykeldev

#endif
