#include "doctor/LegacyExcerpt.h"

#include "aliases/LegacyFile.h"
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

LegacyExcerpt::LegacyExcerpt(const std::string& file) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::size_t at = file.compare(0, mark.size(), mark) == 0 ? mark.size() : 0;
    bool isKept = false;
    for (int number = 1; at < file.size(); ++number) {
        const std::string line = file.substr(at, lengthOfLine(file, at));
        at += line.size();
        const std::size_t first = line.find_first_not_of(blanks);
        if (first != std::string::npos && line[first] == '[') // also one without its end
            isKept = aliases::isAliasSection(line.substr(first + 1, line.find(']') - first - 1));
        if (isKept || first == std::string::npos) {
            text += line;
            continue;
        }
        leftOut.insert(number);
        text += "; left out" + line.substr(std::min(line.find_first_of(lineEnds), line.size()));
    }
}

} // namespace vykeldev::doctor
