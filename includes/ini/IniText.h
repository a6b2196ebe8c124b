#ifndef INI_INITEXT_H
#define INI_INITEXT_H

#include "ini/IniMemory.h"
#include <cstdint>
#include <cstring>

/// Characters, names and escapes. Text is bytes; UTF-8 passes through. The classes are those of the "C"
/// locale and never follow the process's locale, because a file must read the same on every machine.
namespace vyini {

/// Whether a character is a blank: space, tab, line feed, vertical tab, form feed or carriage return.
constexpr bool isBlank(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Whether a character is a decimal digit.
constexpr bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// A byte for comparisons without case: the upper case of a to z; every other byte is itself.
constexpr unsigned char fold(char c) noexcept {
    return static_cast<unsigned char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
}

/// A piece of text that need not end in NUL.
struct IniRange {
    char* begin;
    char* end;

    bool empty() const noexcept { return begin == end; }
};

/// True for null, for empty text and for nothing but blanks.
bool isBlankText(const char* text) noexcept;

/// Compares names of sections and keys, and values by the same rules. Returns -1, 0 or 1. Null sorts before
/// text; two nulls are equal. With `caseSensitive` (not 0), unsigned bytes are compared and nothing is
/// trimmed; otherwise letter case and the blanks at both ends do not count. Any thread may call.
int compareIniNames(const char* left, const char* right, int caseSensitive) noexcept;

/// compareIniNames() == 0, only faster. Neither name is null.
inline bool equalIniNames(const char* left, const char* right, int caseSensitive) noexcept {
    if (caseSensitive != 0)
        return std::strcmp(left, right) == 0;
    const char* l = left;
    const char* r = right;
    for (; *l == *r || fold(*l) == fold(*r); ++l, ++r)
        if (*l == '\0')
            return true;
    // The first difference decides, unless one side has only blanks left.
    return (isBlank(*l) || isBlank(*r)) && compareIniNames(left, right, 0) == 0;
}

/// Names that compare equal have equal hashes (with the same `caseSensitive`). The name is not null.
std::uint32_t hashIniName(const char* name, int caseSensitive) noexcept;

/// Reads the decimal digits at the start of `text` and moves `text` after them. False when there are none or
/// the number is above 4294967295.
bool readDigits(const char*& text, std::uint32_t& number) noexcept;

// Arbitrary text in values: neither the parser nor the writer knows of escapes, so callers use these.

/// Writes a text so that it fits into one line within double quotes: \t, \n, \" and \\, other control
/// characters as \x and two hex digits, the rest unchanged. Returns 0 with the new text in `out`, or
/// IniMemoryFull with `out` unchanged. A null text is an empty one. Any thread may call.
int encodeIniValue(const char* text, IniString& out) noexcept;

/// Reads such a text back. A backslash before any other character is dropped, and so is one at the end; \x
/// without two hex digits is the letter x. \x00 gives a NUL, which ends the text for most readers. Returns 0
/// with the new text in `out`, or IniMemoryFull with `out` unchanged. A null text is an empty one. Any thread
/// may call.
int decodeIniValue(const char* text, IniString& out) noexcept;

} // namespace vyini

#endif
