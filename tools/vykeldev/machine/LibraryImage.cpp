#include "machine/LibraryImage.h"
#include <algorithm>
#include <cstdint>
#include <optional>
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

/// A Windows library whose bytes may be anything. Every read checks its bounds and throws std::out_of_range.
/// Offsets have 64 bits so that sums of the 32-bit ones in files do not wrap.
class PeFile {
public:
    explicit PeFile(std::string_view fileBytes) noexcept : bytes(fileBytes) {}

    LibraryImage image() const {
        using Kind = LibraryImage::Kind;
        if (!contains(0, "MZ") || !contains(u32(0x3C), std::string_view("PE\0\0", 4)))
            return {Kind::NotALibrary, "the file is not a Windows library"};
        if ((u16(coffHeader() + 18) & isDll) == 0)
            return {Kind::NotALibrary, "the file is a program, not a library"};
        const std::uint16_t machine = u16(coffHeader());
        if (machine != machineX64 || u16(optionalHeader()) != optionalHeader64)
            return {Kind::OtherMachine, machine == machineX86     ? "the library is for 32-bit x86"
                                        : machine == machineArm64 ? "the library is for ARM64"
                                                                  : "the library is not for x64"};
        return {Kind::Library, "", missingExports(), imports()};
    }

private:
    std::vector<std::string> missingExports() const {
        std::vector<std::string> missing(entryPointNames.begin(), entryPointNames.end());
        const auto exports = directory(exportDirectory);
        const std::uint32_t count = exports ? std::min(u32(*exports + 24), maxExports) : 0;
        const std::uint64_t names = count == 0 ? 0 : offsetOf(u32(*exports + 32));
        for (std::uint32_t i = 0; i < count && !missing.empty(); ++i) {
            const std::string name = text(offsetOf(u32(names + std::uint64_t{i} * 4)));
            missing.erase(std::remove(missing.begin(), missing.end(), name), missing.end());
        }
        return missing;
    }

    std::vector<std::string> imports() const {
        std::vector<std::string> names;
        const auto imports = directory(importDirectory);
        for (std::uint64_t i = 0; imports && i < maxImports; ++i) {
            const std::uint32_t name = u32(*imports + i * 20 + 12);
            if (name == 0)
                break;
            names.push_back(text(offsetOf(name)));
        }
        return names;
    }

    std::uint64_t coffHeader() const { return std::uint64_t{u32(0x3C)} + 4; }
    std::uint64_t optionalHeader() const { return coffHeader() + 20; }

    /// Where in the file a data directory lies, if it exists.
    std::optional<std::uint64_t> directory(std::uint32_t index) const {
        const bool exists = index < u32(optionalHeader() + 108);
        const std::uint32_t address = exists ? u32(optionalHeader() + 112 + std::uint64_t{index} * 8) : 0;
        return address != 0 ? std::optional(offsetOf(address)) : std::nullopt;
    }

    /// Where in the file the bytes of an address lie.
    std::uint64_t offsetOf(std::uint32_t address) const {
        std::uint64_t section = optionalHeader() + u16(coffHeader() + 16);
        for (std::uint16_t left = std::min(u16(coffHeader() + 2), maxSections); left > 0; --left) {
            const std::uint32_t begin = u32(section + 12);
            if (address >= begin && address - begin < u32(section + 16))
                return std::uint64_t{u32(section + 20)} + (address - begin);
            section += 40;
        }
        throw std::out_of_range("address");
    }

    bool contains(std::uint64_t offset, std::string_view text) const noexcept {
        return offset <= bytes.size() && bytes.substr(offset, text.size()) == text;
    }

    std::uint16_t u16(std::uint64_t offset) const { return static_cast<std::uint16_t>(number(offset, 2)); }
    std::uint32_t u32(std::uint64_t offset) const { return number(offset, 4); }

    /// A little-endian number of so many bytes.
    std::uint32_t number(std::uint64_t offset, unsigned count) const {
        std::uint32_t value = 0;
        while (count-- > 0)
            value = value << 8 | static_cast<unsigned char>(bytes.at(offset + count));
        return value;
    }

    /// A NUL-terminated text, of which no more than 255 bytes are taken.
    std::string text(std::uint64_t offset) const {
        if (offset >= bytes.size())
            throw std::out_of_range("text");
        const std::string_view longest = bytes.substr(offset, 255);
        return std::string(longest.substr(0, longest.find('\0')));
    }

    const std::string_view bytes;
};

} // namespace

LibraryImage readPeImage(std::string_view bytes) {
    try {
        return PeFile(bytes).image();
    } catch (const std::out_of_range&) {
        return {LibraryImage::Kind::NotALibrary, "the file is cut off or damaged"};
    }
}

} // namespace vykeldev
