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

/// Waits for a file that another process creates. Throws after 30 seconds.
inline void waitFor(const fs::path& file) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(file)) {
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error(file.string() + " was not created");
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace vykeltest

#endif
