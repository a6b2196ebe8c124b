#include "machine/LegacyExcerpt.h"

#include "machine/LegacyFile.h"
#include <algorithm>
#include <string_view>

namespace vykeldev::doctor {
namespace {

constexpr std::string_view blanks = " \t\v\f\r\n";
constexpr std::string_view lineEnds("\r\n\0", 3);

/// The length of the line at a place, with its end: one of the three bytes, or two different ones.
std::size_t lengthOfLine(std::string_view file, std::size_t begin) {
    std::size_t end = std::min(file.find_first_of(lineEnds, begin), file.size() - 1);
    if (end + 1 < file.size() && file[end + 1] != file[end] &&
        lineEnds.find(file[end]) != std::string_view::npos &&
        lineEnds.find(file[end + 1]) != std::string_view::npos)
        ++end;
    return end + 1 - begin;
}

} // namespace

std::vector<LegacyLine> aliasLinesOf(const std::string& file) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::vector<LegacyLine> kept;
    std::size_t at = file.compare(0, mark.size(), mark) == 0 ? mark.size() : 0;
    bool isAliases = false;
    for (int number = 1; at < file.size(); ++number) {
        const std::size_t length = lengthOfLine(file, at);
        const std::string line = file.substr(at, std::min(file.find_first_of(lineEnds, at) - at, length));
        at += length;
        const std::size_t first = line.find_first_not_of(blanks);
        if (first == std::string::npos)
            continue;
        if (line[first] == '[') // also one without its end
            isAliases = aliases::isAliasSection(line.substr(first + 1, line.find(']') - first - 1));
        if (isAliases)
            kept.push_back({number, line});
    }
    return kept;
}

} // namespace vykeldev::doctor
