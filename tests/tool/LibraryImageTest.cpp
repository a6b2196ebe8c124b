#include "doctor/LibraryImage.h"
#include "support/Platform.h"
#include "support/TestFiles.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace vykeldev::doctor {

static std::string bytesOf(const std::string& library) {
    return vykeltest::readFile(vykeltest::programFolder() / (library + vykeltest::pluginExtension));
}

TEST(LibraryImage, ReadsWhatTheLinkerWrote) {
    for (const char* const library : {"simulated", "zoo_plugin_without_finalize"}) {
        const std::string bytes = bytesOf(library);
        const bool isWindows = bytes[0] == 'M';
        const LibraryImage image = isWindows ? readPeImage(bytes) : readElfImage(bytes);
        EXPECT_EQ(image.kind, LibraryImage::Kind::Library);
        const char* const always = isWindows ? "KERNEL32.dll" : "libwinhost.so";
        EXPECT_EQ(std::count(image.imports.begin(), image.imports.end(), always), 1);
        const bool whole = library == std::string("simulated");
        EXPECT_EQ(image.missingExports,
                  whole ? std::vector<std::string>() : std::vector<std::string>{"vykel_finalizePlugin"});
        // Neither system's library is one of the other's.
        EXPECT_EQ((isWindows ? readElfImage(bytes) : readPeImage(bytes)).kind,
                  LibraryImage::Kind::NotALibrary);
    }
}

TEST(LibraryImage, SurvivesAnyBytes) {
    const std::string whole = bytesOf("simulated");
    std::mt19937 random(1);
    // Headers and tables lie at both ends of a file.
    const auto place = [&](std::size_t size) {
        const std::size_t offset = random() % std::min<std::size_t>(size, random() % 2 == 0 ? 1024 : size);
        return random() % 4 == 0 ? size - 1 - offset : offset;
    };
    for (int round = 0; round < 500; ++round) {
        std::string bytes = whole.substr(0, round % 3 == 0 ? random() % whole.size() : whole.size());
        for (int i = 0; i < 8 && !bytes.empty(); ++i)
            bytes[place(bytes.size())] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
        readPeImage(bytes);
        readElfImage(bytes);
    }
}

} // namespace vykeldev::doctor
