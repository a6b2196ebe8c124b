// Runs a fuzz target on every input of a packed corpus, as an ordinary test with any compiler. The file
// begins with the number of its inputs, "N inputs". Each further line is an input, in which \n, \r, \t,
// \\ and \xHH stand for the bytes that a line of ASCII does not show. scripts/fuzz adds inputs.
#include "Fuzz.h"
#include <cstdio>
#include <fstream>
#include <string_view>

namespace {

/// The bytes that a line of the corpus stands for. Throws when there is an escape that has no meaning.
std::string unpacked(const std::string& line) {
    constexpr std::string_view names = "nrt\\";
    constexpr std::string_view meanings = "\n\r\t\\";
    std::string bytes;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != '\\')
            bytes += line[i];
        else if (line[++i] != 'x')
            bytes += meanings.at(names.find(line[i]));
        else {
            bytes += static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16));
            i += 2;
        }
    }
    return bytes;
}

} // namespace

int main(int, char** argv) {
    std::ifstream corpus(argv[1]);
    int announced = 0;
    int inputs = 0;
    std::string line;
    corpus >> announced;
    std::getline(corpus, line);
    for (; std::getline(corpus, line); ++inputs) {
        const std::string bytes = unpacked(line);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%d inputs of %d\n", inputs, announced);
    return inputs == announced && inputs > 0 ? 0 : 1;
}
