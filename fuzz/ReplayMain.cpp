// Runs a fuzz target on every file of the folders given: the starting corpus as an ordinary test, with any
// compiler.
#include "Fuzz.h"
#include "support/TestFiles.h"
#include <cstdio>

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : std::filesystem::directory_iterator(argv[i])) {
            const std::string bytes = vykeltest::readFile(file.path());
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++files;
        }
    }
    std::printf("%d files\n", files);
    return files != 0 ? 0 : 1;
}
