#ifndef VYKELDEV_DOCTOR_LIBRARYIMAGE_H
#define VYKELDEV_DOCTOR_LIBRARYIMAGE_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace vykeldev::doctor {

/// What a plug-in must export.
constexpr std::array<const char*, 3> entryPointNames = {"vykel_initializePlugin", "vykel_getPluginInterface",
                                                        "vykel_finalizePlugin"};

/// What a file's headers say, before anybody loads it.
struct LibraryImage {
    enum class Kind { NotALibrary, OtherMachine, Library };
    Kind kind = Kind::NotALibrary;
    std::string detail;                      ///< what it is when it is no library of this machine
    std::vector<std::string> missingExports; ///< of entryPointNames
    std::vector<std::string> imports;        ///< the libraries that it asks for
    std::vector<std::string> missingImports; ///< of these and theirs, what is not found; filled by callers
};

/// The image of what is no library for this machine.
inline LibraryImage refusedImage(LibraryImage::Kind kind, const char* detail) {
    LibraryImage image;
    image.kind = kind;
    image.detail = detail;
    return image;
}

/// Reads the headers of a Windows library (PE32+ for x64). The bytes may be anything: nothing outside them is
/// read, and the time is bounded by their number. Throws only std::bad_alloc.
LibraryImage readPeImage(std::string_view bytes);

} // namespace vykeldev::doctor

#endif
