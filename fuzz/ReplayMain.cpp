// Runs a fuzz target on every input of a packed corpus, as an ordinary test with any compiler. The file
// begins with the number of its inputs, "N inputs". Each further line is an input, in which \n, \r, \t,
// \\ and \xHH stand for the bytes that a line of ASCII does not show; after a tab, what it must make the
// library do. scripts/fuzz adds inputs. With a second argument the file is written anew, with what is done
// now.
#include "Fuzz.h"
#include <cstdio>
#include <fstream>
#include <string_view>

namespace {

constexpr std::string_view names = "nrt\\";
constexpr std::string_view meanings = "\n\r\t\\";

/// The bytes that a line of the corpus stands for. Throws when there is an escape that has no meaning.
std::string unpacked(const std::string& line) {
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

/// The line that stands for the bytes.
std::string packed(const std::string& bytes) {
    std::string line;
    for (const char byte : bytes) {
        const auto name = meanings.find(byte);
        if (name != std::string_view::npos)
            line += {'\\', names[name]};
        else if (byte >= ' ' && byte <= '~')
            line += byte;
        else {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte & 0xFF);
            line += hex;
        }
    }
    return line;
}

/// What the corpus says of an input: what was noted, of a long text the beginning and a sum.
std::string record(std::string text) {
    constexpr std::size_t longest = 1500;
    std::uint32_t sum = 0;
    for (const char byte : text)
        sum = sum * 31 + (byte & 0xFF);
    if (text.size() > longest)
        text.replace(longest, text.npos, "..." + std::to_string(sum));
    return text.empty() ? "" : '\t' + packed(text);
}

} // namespace

int main(int argc, char** argv) {
    vykelfuzz::isReplay = true;
    std::ifstream corpus(argv[1]);
    int announced = 0, inputs = 0, wrong = 0;
    std::string line;
    corpus >> announced;
    std::getline(corpus, line);
    std::string text = std::to_string(announced) + line + '\n';
    for (; std::getline(corpus, line); ++inputs) {
        const std::string input = line.substr(0, line.find('\t'));
        const std::string bytes = unpacked(input);
        vykelfuzz::noted.clear();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        const std::string right = input + record(vykelfuzz::noted);
        text += right + '\n';
        if (right == line)
            continue;
        ++wrong;
        std::printf("recorded: %s\nnow:      %s\n", line.c_str(), right.c_str());
    }
    std::printf("%d inputs of %d, %d otherwise than recorded\n", inputs, announced, wrong);
    if (argc > 2) // record
        std::ofstream(argv[1], std::ios::binary) << text;
    return inputs == announced && inputs > 0 && (wrong == 0 || argc > 2) ? 0 : 1;
}
