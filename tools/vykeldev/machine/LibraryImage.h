#ifndef VYKELDEV_MACHINE_LIBRARYIMAGE_H
#define VYKELDEV_MACHINE_LIBRARYIMAGE_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace vykeldev {

/// What a plug-in must export.
constexpr std::array<const char*, 3> entryPointNames = {"vykel_initializePlugin", "vykel_getPluginInterface",
                                                        "vykel_finalizePlugin"};

/// What a file's headers say, before anybody loads it.
struct LibraryImage {
    enum class Kind { NotALibrary, OtherMachine, Library };
    Kind kind = Kind::NotALibrary;
    std::string detail = {};                      ///< What it is when it is not a library for this machine.
    std::vector<std::string> missingExports = {}; ///< Of entryPointNames.
    std::vector<std::string> imports = {};        ///< The libraries that it imports.
    /// Of these and theirs, those that are not found. Callers fill it.
    std::vector<std::string> missingImports = {};
};

/// Reads the headers of a Windows library (PE32+ for x64). The bytes may be anything: nothing outside them is
/// read, and the time is bounded by their number. Throws only std::bad_alloc.
LibraryImage readPeImage(std::string_view bytes);

} // namespace vykeldev

#endif
