#include "system/DisplayText.h"

#include "system/Text.h"
#include <algorithm>
#include <cstdio>
#include <iterator>

namespace vykeldev {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// Marks that are drawn over the character before them, and characters without any width.
constexpr Range withoutWidth[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD},  {0x0610, 0x061A},
                                  {0x064B, 0x065F}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E},  {0x1AB0, 0x1AFF},
                                  {0x1DC0, 0x1DFF}, {0x200B, 0x200D}, {0x20D0, 0x20FF},  {0xFE00, 0xFE0F},
                                  {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0xE0100, 0xE01EF}};

/// Characters of East Asian scripts and pictographs, two columns wide.
constexpr Range wide[] = {{0x1100, 0x115F},  {0x231A, 0x231B},   {0x2E80, 0x303E},   {0x3041, 0x33FF},
                          {0x3400, 0x4DBF},  {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xA960, 0xA97F},
                          {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},
                          {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF},
                          {0x20000, 0x3FFFD}};

template <std::size_t size>
bool contains(const Range (&ranges)[size], char32_t character) noexcept {
    return std::any_of(std::begin(ranges), std::end(ranges), [character](const Range& range) {
        return range.first <= character && character <= range.last;
    });
}

/// Also ends of lines and what changes the writing direction.
bool isControl(WCHAR unit) noexcept {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x061C || unit == 0x200E ||
           unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

} // namespace

std::string printable(std::string_view text, WCHAR kept) {
    WideString result;
    for (const WCHAR unit : toWide(text)) {
        if (!isControl(unit) || unit == kept) {
            result += unit;
            continue;
        }
        char escape[8] = {};
        std::snprintf(escape, sizeof escape, unit < 0x100 ? "\\x%02X" : "\\u%04X", unsigned{unit});
        result += toWide(escape);
    }
    return toUtf8(result);
}

std::size_t displayWidth(std::string_view text) {
    const WideString units = toWide(text);
    std::size_t columns = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (character >= 0xD800 && character < 0xDC00 && i + 1 < units.size()) { // a high surrogate
            // cppcheck-suppress integerOverflow ; char32_t has no sign
            character = 0x10000 + ((character - 0xD800) << 10) + (char32_t{units[++i]} - 0xDC00);
        }
        columns += contains(withoutWidth, character) ? 0u : contains(wide, character) ? 2u : 1u;
    }
    return columns;
}

} // namespace vykeldev
