#include "doctor/Zip.h"

#include <cstdint>

namespace vykeldev::doctor {
namespace {

constexpr std::uint32_t localHeader = 0x04034B50;
constexpr std::uint32_t centralHeader = 0x02014B50;
constexpr std::uint32_t endOfCentral = 0x06054B50;
constexpr std::size_t version = 20;
constexpr std::size_t namesAreUtf8 = 0x0800;
constexpr std::size_t firstOf1980 = 0x0021; // the earliest date of the format

void put16(std::string& out, std::size_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8 & 0xFF);
}

void put32(std::string& out, std::size_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
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
    for (const std::size_t value : {version, namesAreUtf8, stored, midnight, firstOf1980})
        put16(out, value);
    for (const std::size_t value : {std::size_t{crc32(entry.bytes)}, entry.bytes.size(), entry.bytes.size()})
        put32(out, value);
    put32(out, entry.name.size()); // and no extra field
}

} // namespace

std::string makeZip(const std::vector<ZipEntry>& entries) {
    std::string archive;
    std::string central;
    for (const ZipEntry& entry : entries) {
        put32(central, centralHeader);
        put16(central, version);
        putFacts(central, entry);
        central.append(10, '\0'); // no comment, first disk, no attributes
        put32(central, archive.size());
        central += entry.name;
        put32(archive, localHeader);
        putFacts(archive, entry);
        archive += entry.name + entry.bytes;
    }
    const std::size_t centralBegin = archive.size();
    archive += central;
    put32(archive, endOfCentral);
    put32(archive, 0); // one disk
    put16(archive, entries.size());
    put16(archive, entries.size());
    put32(archive, central.size());
    put32(archive, centralBegin);
    put16(archive, 0);
    return archive;
}

} // namespace vykeldev::doctor
