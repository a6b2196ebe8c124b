// Runs a fuzz target on every file of the folders given: the starting corpus as an ordinary test, with any
// compiler.
#include "Fuzz.h"
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream stream(file.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(stream), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    std::printf("%d files\n", files);
    return files != 0 ? 0 : 1;
}
