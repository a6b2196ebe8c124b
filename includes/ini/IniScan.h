#ifndef INI_INISCAN_H
#define INI_INISCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Scanning eight bytes at a time. Lines and names are short, so that a call of the C library for each costs
/// more than the bytes themselves.
namespace vyini {

/// Bytes behind the end of a text that a scan may read.
constexpr std::size_t scanSlack = sizeof(std::uint64_t);

constexpr std::uint64_t inEveryByte(unsigned char value) noexcept {
    return UINT64_MAX / 0xFF * value;
}

/// Marks the first byte below a limit (at most 0x80) in its top bit; marks in later bytes may be false.
constexpr std::uint64_t markBelow(std::uint64_t word, unsigned char limit) noexcept {
    return (word - inEveryByte(limit)) & ~word & inEveryByte(0x80);
}

/// Number of the lowest marked byte; at least one is marked.
constexpr std::size_t firstMarked(std::uint64_t marks) noexcept {
    const std::uint64_t below = (marks & (0 - marks)) - 1;
    return static_cast<std::size_t>((below & inEveryByte(1)) * inEveryByte(1) >> 56) - 1;
}

/// The next eight bytes, the first of them lowest: all targets are little-endian.
inline std::uint64_t loadWord(const char* text) noexcept {
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof(word));
    return word;
}

constexpr bool isLineEnd(char c) noexcept {
    return c == '\r' || c == '\n' || c == '\0';
}

/// The first carriage return, line feed or NUL; there must be one.
inline char* findLineEnd(char* text) noexcept {
    for (;;) {
        const std::uint64_t marks = markBelow(loadWord(text), '\r' + 1);
        if (marks == 0) {
            text += sizeof(marks);
            continue;
        }
        text += firstMarked(marks);
        if (isLineEnd(*text))
            return text;
        ++text; // a tab, or another control character
    }
}

/// Where the character first stands, or the end.
inline char* findByte(char* text, char* end, char wanted) noexcept {
    for (; text < end; text += sizeof(std::uint64_t)) {
        const std::uint64_t word = loadWord(text) ^ inEveryByte(static_cast<unsigned char>(wanted));
        const std::uint64_t marks = markBelow(word, 1);
        if (marks != 0) {
            text += firstMarked(marks);
            break;
        }
    }
    return text < end ? text : end;
}

} // namespace vyini

#endif
