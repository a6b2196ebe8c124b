#include "doctor/Zip.h"

#include <cstdint>
#include <initializer_list>

namespace vykeldev::doctor {
namespace {

constexpr std::uint32_t localHeader = 0x04034B50;
constexpr std::uint32_t centralHeader = 0x02014B50;
constexpr std::uint32_t endOfCentral = 0x06054B50;
constexpr std::size_t version = 20;
constexpr std::size_t namesAreUtf8 = 0x0800;
constexpr std::size_t firstOf1980 = 0x0021; // the earliest date of the format

/// Appends the values, each with that many bytes, the lowest first.
void put(std::string& out, unsigned bytes, std::initializer_list<std::size_t> values) {
    for (const std::size_t value : values)
        for (unsigned i = 0; i < bytes; ++i)
            out += static_cast<char>(value >> 8 * i & 0xFF);
}

std::uint32_t crc32(const std::string& bytes) noexcept {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

/// What both headers of an entry share, from the version that is needed to the length of the extra field.
void putFacts(std::string& out, const ZipEntry& entry) {
    constexpr std::size_t stored = 0;
    constexpr std::size_t midnight = 0;
    constexpr std::size_t noExtraField = 0;
    put(out, 2, {version, namesAreUtf8, stored, midnight, firstOf1980});
    put(out, 4, {crc32(entry.bytes), entry.bytes.size(), entry.bytes.size()});
    put(out, 2, {entry.name.size(), noExtraField});
}

} // namespace

std::string makeZip(const std::vector<ZipEntry>& entries) {
    std::string archive;
    std::string central;
    for (const ZipEntry& entry : entries) {
        put(central, 4, {centralHeader});
        put(central, 2, {version});
        putFacts(central, entry);
        central.append(10, '\0'); // no comment, first disk, no attributes
        put(central, 4, {archive.size()});
        central += entry.name;
        put(archive, 4, {localHeader});
        putFacts(archive, entry);
        archive += entry.name + entry.bytes;
    }
    const std::size_t centralBegin = archive.size();
    archive += central;
    put(archive, 4, {endOfCentral});
    put(archive, 2, {0, 0, entries.size(), entries.size()}); // one disk
    put(archive, 4, {central.size(), centralBegin});
    put(archive, 2, {0}); // no comment
    return archive;
}

} // namespace vykeldev::doctor
