#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <windows.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// What the fuzz targets share.
namespace vykelfuzz {

/// Ends the process when something is not as it must be: the fuzzer then keeps the input.
inline void check(bool condition) {
    if (!condition)
        std::abort();
}

/// What an input made the library do; the corpus says what it must be. Empty while a fuzzer runs.
inline std::string noted;
inline bool isReplay = false;

inline void note(const std::string& text) {
    if (isReplay)
        noted += text + '|';
}

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// The folder of this process for the files of a target. A fuzzer that finds something leaves it behind.
struct ScratchFolder {
    ScratchFolder() { std::filesystem::create_directories(path); }
    ~ScratchFolder() { std::filesystem::remove_all(path); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("vykel-fuzz-" + std::to_string(GetCurrentProcessId()));
};

} // namespace vykelfuzz

#endif
