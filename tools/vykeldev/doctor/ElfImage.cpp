#include "doctor/ByteView.h"
#include "doctor/LibraryImage.h"
#include <algorithm>
#include <cstdint>
#include <optional>

namespace vykeldev::doctor {
namespace {

constexpr std::uint16_t sharedObject = 3;
constexpr std::uint16_t machineX64 = 62;
constexpr std::uint32_t dynamicSection = 6;
constexpr std::uint32_t dynamicSymbols = 11;
constexpr std::uint64_t tagNeeded = 1;
constexpr std::uint64_t tagRpath = 15;
constexpr std::uint64_t tagRunpath = 29;
constexpr std::uint64_t symbolSize = 24;
constexpr std::uint64_t dynamicSize = 16;

struct Section {
    std::uint64_t offset;
    std::uint64_t size;
    std::uint64_t texts; // offset of the section with its texts
};

std::uint64_t headerOf(const ByteView& file, std::uint64_t index) {
    const std::uint64_t table = std::min(file.u64(40), file.size());
    return table + index * file.u16(58);
}

std::optional<Section> findSection(const ByteView& file, std::uint32_t type) {
    const std::uint16_t count = file.u16(60);
    for (std::uint16_t i = 0; i < count; ++i) {
        const std::uint64_t header = headerOf(file, i);
        if (file.u32(header + 4) != type)
            continue;
        const std::uint64_t texts = headerOf(file, file.u32(header + 40));
        return Section{file.u64(header + 24), std::min(file.u64(header + 32), file.size()),
                       file.u64(texts + 24)};
    }
    return std::nullopt;
}

std::string textOf(const ByteView& file, const Section& section, std::uint64_t place) {
    return file.text(std::min(section.texts, file.size()) + std::min(place, file.size()));
}

std::vector<std::string> findMissingExports(const ByteView& file) {
    std::vector<std::string> missing(entryPointNames.begin(), entryPointNames.end());
    const std::optional<Section> symbols = findSection(file, dynamicSymbols);
    for (std::uint64_t at = 0; symbols && at + symbolSize <= symbols->size; at += symbolSize) {
        const std::uint64_t symbol = symbols->offset + at;
        const bool isDefined = file.u16(symbol + 6) != 0;
        if (isDefined) {
            const std::string name = textOf(file, *symbols, file.u32(symbol));
            missing.erase(std::remove(missing.begin(), missing.end(), name), missing.end());
        }
    }
    return missing;
}

void readDynamic(const ByteView& file, LibraryImage& image) {
    const std::optional<Section> section = findSection(file, dynamicSection);
    for (std::uint64_t at = 0; section && at + dynamicSize <= section->size; at += dynamicSize) {
        const std::uint64_t tag = file.u64(section->offset + at);
        const std::uint64_t value = file.u64(section->offset + at + 8);
        if (tag == 0)
            break;
        if (tag == tagNeeded)
            image.imports.push_back(textOf(file, *section, value));
        else if (tag == tagRpath || tag == tagRunpath)
            image.searchPath = textOf(file, *section, value);
    }
}

LibraryImage readHeaders(const ByteView& file) {
    using Kind = LibraryImage::Kind;
    if (!file.startsWith(0, "\x7F"
                            "ELF"))
        return refusedImage(Kind::NotALibrary, "the file is no shared object");
    const bool is64Bit = file.startsWith(4, "\x02\x01"); // little-endian, too
    if (file.u16(16) != sharedObject)
        return refusedImage(Kind::NotALibrary,
                            "the file is no shared object, but a program or an object file");
    if (!is64Bit || file.u16(18) != machineX64)
        return refusedImage(Kind::OtherMachine, "the library is not for 64-bit x86");
    LibraryImage image;
    image.missingExports = findMissingExports(file);
    readDynamic(file, image);
    image.kind = Kind::Library;
    return image;
}

} // namespace

LibraryImage readElfImage(std::string_view bytes) {
    try {
        return readHeaders(ByteView(bytes));
    } catch (const std::out_of_range&) {
        return refusedImage(LibraryImage::Kind::NotALibrary, "the file is cut off or damaged");
    }
}

} // namespace vykeldev::doctor
