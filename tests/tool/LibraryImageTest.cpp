#include "doctor/LibraryImage.h"
#include <cstdint>
#include <gtest/gtest.h>
#include <random>

namespace vykeldev::doctor {
namespace {

using Kind = LibraryImage::Kind;
using Texts = std::vector<std::string>;

void put(std::string& bytes, std::size_t offset, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.at(offset + static_cast<std::size_t>(i)) = static_cast<char>(value >> 8 * i & 0xFF);
}

/// A library for x64 with one section, whose bytes from 0x100 on belong to the addresses from 0x1000 on.
std::string makeLibrary(const Texts& exports, const Texts& imports) {
    constexpr std::uint32_t exportTable = 0x100, nameTable = 0x140, importTable = 0x160, toAddress = 0xF00;
    std::string bytes(0x200, '\0');
    bytes.replace(0, 2, "MZ");
    bytes.replace(0x40, 2, "PE");
    const struct {
        std::size_t offset;
        std::uint32_t value;
        int count;
    } fields[] = {{0x3C, 0x40, 4},
                  {0x44, 0x8664, 2}, // machine
                  {0x46, 1, 2},      // sections
                  {0x54, 0x80, 2},   // size of the optional header
                  {0x56, 0x2000, 2}, // a DLL
                  {0x58, 0x20B, 2},  // PE32+
                  {0xC4, 2, 4},      // directories
                  {0xC8, exportTable + toAddress, 4},
                  {0xD0, importTable + toAddress, 4},
                  {0xE4, 0x1000, 4}, // the section's address, size and place
                  {0xE8, 0x400, 4},
                  {0xEC, 0x100, 4},
                  {exportTable + 24, static_cast<std::uint32_t>(exports.size()), 4},
                  {exportTable + 32, nameTable + toAddress, 4}};
    for (const auto& field : fields)
        put(bytes, field.offset, field.value, field.count);
    const auto addName = [&](std::size_t offset, const std::string& name) {
        put(bytes, offset, static_cast<std::uint32_t>(bytes.size()) + toAddress, 4);
        bytes += name + '\0';
    };
    for (std::size_t i = 0; i < exports.size(); ++i)
        addName(nameTable + 4 * i, exports[i]);
    for (std::size_t i = 0; i < imports.size(); ++i)
        addName(importTable + 20 * i + 12, imports[i]);
    return bytes;
}

const Texts imported = {"KERNEL32.dll", "helper.dll"};
const std::string library = makeLibrary({"vykel_finalizePlugin", "vykel_initializePlugin", "more"}, imported);

TEST(LibraryImage, ReadsTheHeaders) {
    const LibraryImage image = readPeImage(library);
    EXPECT_EQ(image.kind, Kind::Library);
    EXPECT_EQ(image.imports, imported);
    EXPECT_EQ(image.missingExports, Texts{"vykel_getPluginInterface"});
    EXPECT_EQ(readPeImage(makeLibrary({}, {})).missingExports.size(), entryPointNames.size());
    const struct {
        std::size_t offset;
        std::uint32_t value; // of 16 bits
        Kind kind;
        const char* detail;
    } cases[] = {{0, 0, Kind::NotALibrary, "the file is not a Windows library"},
                 {0x40, 0, Kind::NotALibrary, "the file is not a Windows library"},
                 {0x3C, 0xFFFF, Kind::NotALibrary, "the file is not a Windows library"},
                 {0x56, 0, Kind::NotALibrary, "the file is a program, not a library"},
                 {0x44, 0x14C, Kind::OtherMachine, "the library is for 32-bit x86"},
                 {0x44, 0xAA64, Kind::OtherMachine, "the library is for ARM64"},
                 {0x44, 0x1C4, Kind::OtherMachine, "the library is not for x64"},
                 {0x58, 0x10B, Kind::OtherMachine, "the library is not for x64"},
                 {0xC8, 0x9000, Kind::NotALibrary, "the file is cut off or damaged"},
                 {0x16C, 0x13FF, Kind::NotALibrary, "the file is cut off or damaged"}};
    for (const auto& each : cases) {
        std::string bytes = library;
        put(bytes, each.offset, each.value, 2);
        const LibraryImage broken = readPeImage(bytes);
        EXPECT_EQ(broken.kind, each.kind) << each.offset;
        EXPECT_EQ(broken.detail, each.detail) << each.offset;
    }
}

TEST(LibraryImage, SurvivesAnyBytes) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes = library.substr(0, round % 3 == 0 ? random() % library.size() : library.size());
        for (int i = 0; i < 4 && !bytes.empty(); ++i)
            bytes[random() % bytes.size()] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
        readPeImage(bytes);
    }
}

} // namespace
} // namespace vykeldev::doctor
