#include "machine/LibraryImage.h"
#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace vykeldev {
namespace {

constexpr std::uint16_t machineX64 = 0x8664;
constexpr std::uint16_t machineX86 = 0x14C;
constexpr std::uint16_t machineArm64 = 0xAA64;
constexpr std::uint16_t isDll = 0x2000;
constexpr std::uint16_t optionalHeader64 = 0x20B;
constexpr std::uint32_t exportDirectory = 0;
constexpr std::uint32_t importDirectory = 1;
constexpr std::uint64_t maxImports = 4096;
constexpr std::uint32_t maxExports = 65536; // their ordinals have 16 bits
constexpr std::uint16_t maxSections = 96;   // the system refuses more

/// Little-endian numbers and texts in bytes that may be anything. Every read checks its bounds and throws
/// std::out_of_range. Offsets have 64 bits so that sums of the 32-bit ones in files do not wrap.
class ByteView {
public:
    explicit ByteView(std::string_view fileBytes) noexcept : bytes(fileBytes) {}

    std::uint16_t u16(std::uint64_t offset) const { return static_cast<std::uint16_t>(number(offset, 2)); }
    std::uint32_t u32(std::uint64_t offset) const { return static_cast<std::uint32_t>(number(offset, 4)); }

    bool startsWith(std::uint64_t offset, std::string_view text) const noexcept {
        return offset <= bytes.size() && bytes.substr(offset, text.size()) == text;
    }

    /// A NUL-terminated text, of which no more than 255 bytes are taken.
    std::string text(std::uint64_t offset) const {
        if (offset >= bytes.size())
            throw std::out_of_range("text");
        const std::string_view longest = bytes.substr(offset, 255);
        return std::string(longest.substr(0, longest.find('\0')));
    }

private:
    std::uint64_t number(std::uint64_t offset, unsigned count) const {
        if (offset > bytes.size() || bytes.size() - offset < count)
            throw std::out_of_range("number");
        std::uint64_t value = 0;
        for (unsigned i = count; i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
        return value;
    }

    std::string_view bytes;
};

/// Where the headers begin in the file.
struct Headers {
    std::uint64_t coff;     ///< The COFF header.
    std::uint64_t optional; ///< The optional header.
    std::uint64_t sections; ///< The section table.
    std::uint16_t sectionCount;
};

Headers findHeaders(const ByteView& file) {
    const std::uint64_t coff = std::uint64_t{file.u32(0x3C)} + 4;
    const std::uint64_t optional = coff + 20;
    return {coff, optional, optional + file.u16(coff + 16), std::min(file.u16(coff + 2), maxSections)};
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
    const std::uint32_t count = std::min(file.u32(exports + 24), maxExports);
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
    for (std::uint64_t i = 0; i < maxImports; ++i) {
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
        return {Kind::NotALibrary, "the file is not a Windows library"};
    const Headers headers = findHeaders(file);
    if ((file.u16(headers.coff + 18) & isDll) == 0)
        return {Kind::NotALibrary, "the file is a program, not a library"};
    const std::uint16_t machine = file.u16(headers.coff);
    if (machine != machineX64 || file.u16(headers.optional) != optionalHeader64)
        return {Kind::OtherMachine, machine == machineX86     ? "the library is for 32-bit x86"
                                    : machine == machineArm64 ? "the library is for ARM64"
                                                              : "the library is not for x64"};
    return {Kind::Library, "", findMissingExports(file, headers), readImports(file, headers)};
}

} // namespace

LibraryImage readPeImage(std::string_view bytes) {
    try {
        return readHeaders(ByteView(bytes));
    } catch (const std::out_of_range&) {
        return {LibraryImage::Kind::NotALibrary, "the file is cut off or damaged"};
    }
}

} // namespace vykeldev
