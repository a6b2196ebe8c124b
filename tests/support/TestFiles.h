#ifndef TESTS_TESTFILES_H
#define TESTS_TESTFILES_H

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>

namespace vykeltest {

namespace fs = std::filesystem;

/// All bytes of a file; empty when it cannot be opened.
inline std::string readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// Waits for a file that another process makes; throws when it does not come, as when that process died.
inline void waitFor(const fs::path& file) {
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(file)) {
        if (std::chrono::steady_clock::now() > patience)
            throw std::runtime_error(file.string() + " does not come");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace vykeltest

#endif
