#include "doctor/ByteView.h"
#include "doctor/LibraryImage.h"
#include <algorithm>
#include <cstdint>

namespace vykeldev::doctor {
namespace {

constexpr std::uint16_t machineX64 = 0x8664;
constexpr std::uint16_t isDll = 0x2000;
constexpr std::uint16_t optionalHeader64 = 0x20B;
constexpr std::uint32_t exportDirectory = 0;
constexpr std::uint32_t importDirectory = 1;
constexpr std::uint64_t mostImports = 4096;
constexpr std::uint32_t mostExports = 65536; // their ordinals have 16 bits
constexpr std::uint16_t mostSections = 96;   // the system refuses more

struct Headers {
    std::uint64_t coff;     // offset of the COFF header
    std::uint64_t optional; // of the optional header
    std::uint64_t sections; // of the section table
    std::uint16_t sectionCount;
};

Headers findHeaders(const ByteView& file) {
    const std::uint64_t coff = std::uint64_t{file.u32(0x3C)} + 4;
    const std::uint64_t optional = coff + 20;
    return {coff, optional, optional + file.u16(coff + 16), std::min(file.u16(coff + 2), mostSections)};
}

/// Where in the file the bytes of an address lie.
std::uint64_t offsetOf(const ByteView& file, const Headers& headers, std::uint32_t address) {
    for (std::uint16_t i = 0; i < headers.sectionCount; ++i) {
        const std::uint64_t section = headers.sections + std::uint64_t{i} * 40;
        const std::uint32_t begin = file.u32(section + 12);
        if (address >= begin && address - begin < file.u32(section + 16))
            return std::uint64_t{file.u32(section + 20)} + (address - begin);
    }
    throw std::out_of_range("address");
}

/// The address of a data directory; 0 when there is none.
std::uint32_t directory(const ByteView& file, const Headers& headers, std::uint32_t index) {
    const bool exists = index < file.u32(headers.optional + 108);
    return exists ? file.u32(headers.optional + 112 + std::uint64_t{index} * 8) : 0;
}

std::vector<std::string> findMissingExports(const ByteView& file, const Headers& headers) {
    std::vector<std::string> missing(entryPointNames.begin(), entryPointNames.end());
    const std::uint32_t address = directory(file, headers, exportDirectory);
    if (address == 0)
        return missing;
    const std::uint64_t exports = offsetOf(file, headers, address);
    const std::uint32_t count = std::min(file.u32(exports + 24), mostExports);
    const std::uint64_t names = count == 0 ? 0 : offsetOf(file, headers, file.u32(exports + 32));
    for (std::uint32_t i = 0; i < count && !missing.empty(); ++i) {
        const std::string name = file.text(offsetOf(file, headers, file.u32(names + std::uint64_t{i} * 4)));
        missing.erase(std::remove(missing.begin(), missing.end(), name), missing.end());
    }
    return missing;
}

std::vector<std::string> readImports(const ByteView& file, const Headers& headers) {
    std::vector<std::string> names;
    const std::uint32_t address = directory(file, headers, importDirectory);
    if (address == 0)
        return names;
    const std::uint64_t imports = offsetOf(file, headers, address);
    for (std::uint64_t i = 0; i < mostImports; ++i) {
        const std::uint32_t name = file.u32(imports + i * 20 + 12);
        if (name == 0)
            break;
        names.push_back(file.text(offsetOf(file, headers, name)));
    }
    return names;
}

LibraryImage readHeaders(const ByteView& file) {
    using Kind = LibraryImage::Kind;
    if (!file.startsWith(0, "MZ") || !file.startsWith(file.u32(0x3C), std::string_view("PE\0\0", 4)))
        return refusedImage(Kind::NotALibrary, "the file is no Windows library");
    const Headers headers = findHeaders(file);
    if ((file.u16(headers.coff + 18) & isDll) == 0)
        return refusedImage(Kind::NotALibrary, "the file is a program, not a library");
    if (file.u16(headers.coff) != machineX64 || file.u16(headers.optional) != optionalHeader64) {
        return refusedImage(Kind::OtherMachine,
                            file.u16(headers.coff) == 0x14C    ? "the library is for 32-bit x86"
                            : file.u16(headers.coff) == 0xAA64 ? "the library is for ARM64"
                                                               : "the library is not for x64");
    }
    LibraryImage image;
    image.missingExports = findMissingExports(file, headers);
    image.imports = readImports(file, headers);
    image.kind = Kind::Library;
    return image;
}

} // namespace

LibraryImage readPeImage(std::string_view bytes) {
    try {
        return readHeaders(ByteView(bytes));
    } catch (const std::out_of_range&) {
        return refusedImage(LibraryImage::Kind::NotALibrary, "the file is cut off or damaged");
    }
}

} // namespace vykeldev::doctor
