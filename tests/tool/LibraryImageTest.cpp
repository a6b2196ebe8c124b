#include "machine/LibraryImage.h"
#include <gtest/gtest.h>

namespace vykeldev {
namespace {

using Kind = LibraryImage::Kind;
using Texts = std::vector<std::string>;
using namespace std::string_literals;

struct Part {
    std::size_t offset;
    std::string bytes;
};

std::string assemble(std::string whole, const std::vector<Part>& parts) {
    for (const Part& part : parts)
        whole.replace(part.offset, part.bytes.size(), part.bytes);
    return whole;
}

/// A library for x64 with one section, whose bytes from 0x100 on belong to the addresses from 0x1000 on.
const std::string library =
    assemble(std::string(0x200, '\0'), {{0, "MZ"},
                                        {0x3C, "\x40"},
                                        {0x40, "PE\0\0\x64\x86\x01"s},   // machine, sections
                                        {0x54, "\x80\0\0\x20\x0B\x02"s}, // size of what follows, a DLL
                                        {0xC4, "\2\0\0\0\0\x10\0\0\0\0\0\0\x60\x10"s}, // directories
                                        {0xE5, "\x10\0\0\0\1\0\0\0\1"s},               // the section
                                        {0x118, "\2\0\0\0\0\0\0\0\x40\x10"s},          // two exports
                                        {0x140, "\xA0\x10\0\0\xB8\x10"s},
                                        {0x16C, "\xD0\x10"}, // two imports
                                        {0x180, "\xE0\x10"},
                                        {0x1A0, "vykel_finalizePlugin\0\0\0\0vykel_initializePlugin"s},
                                        {0x1D0, "KERNEL32.dll\0\0\0\0helper.dll"s}});

TEST(LibraryImage, ReadsTheHeaders) {
    const LibraryImage image = readPeImage(library);
    EXPECT_EQ(image.kind, Kind::Library);
    EXPECT_EQ(image.imports, (Texts{"KERNEL32.dll", "helper.dll"}));
    EXPECT_EQ(image.missingExports, Texts{"vykel_getPluginInterface"});
    const struct {
        Part part;
        Kind kind;
        const char* detail;
    } cases[] = {{{0, "X"}, Kind::NotALibrary, "the file is not a Windows library"},
                 {{0x40, "X"}, Kind::NotALibrary, "the file is not a Windows library"},
                 {{0x3D, "X"}, Kind::NotALibrary, "the file is not a Windows library"},
                 {{0x57, "\0"s}, Kind::NotALibrary, "the file is a program, not a library"},
                 {{0x44, "\x4C\x01"}, Kind::OtherMachine, "the library is for 32-bit x86"},
                 {{0x44, "\x64\xAA"}, Kind::OtherMachine, "the library is for ARM64"},
                 {{0x44, "\xC4\x01"}, Kind::OtherMachine, "the library is not for x64"},
                 {{0x59, "\x01"}, Kind::OtherMachine, "the library is not for x64"},
                 {{0xC9, "\x90"}, Kind::NotALibrary, "the file is cut off or damaged"},
                 {{0x16D, "\x13"}, Kind::NotALibrary, "the file is cut off or damaged"}};
    for (const auto& each : cases) {
        const LibraryImage broken = readPeImage(assemble(library, {each.part}));
        EXPECT_EQ(broken.kind, each.kind) << each.part.offset;
        EXPECT_EQ(broken.detail, each.detail) << each.part.offset;
    }
}

} // namespace
} // namespace vykeldev
