#ifndef TESTS_TESTFILES_H
#define TESTS_TESTFILES_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

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

} // namespace vykeltest

#endif
