#include "ini/IniText.h"

#include "ini/IniCode.h"
#include "vybase/hex.h"
#include <cstring>

namespace vyini {

namespace {

const char* skipBlanks(const char* text) noexcept {
    while (isBlank(*text))
        ++text;
    return text;
}

int sign(int difference) noexcept {
    return (difference > 0) - (difference < 0);
}

constexpr bool isControl(char c) noexcept {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Appends the escaped form of one character and returns the end.
char* encode(char c, char* out) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    const char letter = c == '\t' ? 't' : c == '\n' ? 'n' : c == '"' || c == '\\' ? c : '\0';
    if (letter != '\0') {
        *out++ = '\\';
        *out++ = letter;
    } else if (isControl(c)) {
        *out++ = '\\';
        *out++ = 'x';
        *out++ = vybase::hexDigits[byte >> 4];
        *out++ = vybase::hexDigits[byte & 0x0F];
    } else {
        *out++ = c;
    }
    return out;
}

/// What the character `c` after a backslash means. `text`, which follows it, is moved past hex digits.
char decodeEscape(char c, const char*& text) noexcept {
    if (c == 'n')
        return '\n';
    if (c == 't')
        return '\t';
    if (c == 'x' && vybase::hexValue(text[0]) >= 0 && vybase::hexValue(text[1]) >= 0) {
        const int byte = vybase::hexValue(text[0]) * 16 + vybase::hexValue(text[1]);
        text += 2;
        return static_cast<char>(byte);
    }
    return c;
}

/// Copies what the work buffer holds up to `end` into a text of exactly that size.
int storeExact(const IniString& work, const char* end, IniString& out) noexcept {
    IniString exact = copyText(work.get(), static_cast<std::size_t>(end - work.get()));
    if (exact == nullptr)
        return IniMemoryFull;
    out = std::move(exact);
    return 0;
}

} // namespace

bool isBlankText(const char* text) noexcept {
    return text == nullptr || *skipBlanks(text) == '\0';
}

int compareIniNames(const char* left, const char* right, int caseSensitive) noexcept {
    if (left == nullptr || right == nullptr)
        return (left != nullptr) - (right != nullptr);
    if (caseSensitive != 0)
        return sign(std::strcmp(left, right));
    left = skipBlanks(left);
    right = skipBlanks(right);
    while (*left != '\0' && *right != '\0') {
        if (fold(*left) != fold(*right))
            return fold(*left) < fold(*right) ? -1 : 1;
        ++left;
        ++right;
    }
    return static_cast<int>(!isBlankText(left)) - static_cast<int>(!isBlankText(right));
}

std::uint32_t hashIniName(const char* name, int caseSensitive) noexcept {
    constexpr std::uint32_t offsetBasis = 2166136261; // FNV-1a
    constexpr std::uint32_t prime = 16777619;
    std::uint32_t hash = offsetBasis;
    if (caseSensitive != 0) {
        for (; *name != '\0'; ++name)
            hash = (hash ^ static_cast<unsigned char>(*name)) * prime;
        return hash;
    }
    // Blanks at the end do not count, but whether a blank is at the end shows only later.
    std::uint32_t hashWithoutTrailing = hash;
    for (name = skipBlanks(name); *name != '\0'; ++name) {
        hash = (hash ^ fold(*name)) * prime;
        if (!isBlank(*name))
            hashWithoutTrailing = hash;
    }
    return hashWithoutTrailing;
}

bool readDigits(const char*& text, std::uint32_t& number) noexcept {
    if (!isDigit(*text))
        return false;
    number = 0;
    for (; isDigit(*text); ++text) {
        const auto digit = static_cast<std::uint32_t>(*text - '0');
        if (number > (UINT32_MAX - digit) / 10)
            return false;
        number = number * 10 + digit;
    }
    return true;
}

int encodeIniValue(const char* text, IniString& out) noexcept {
    text = text != nullptr ? text : "";
    const IniString work(static_cast<char*>(std::malloc(4 * std::strlen(text) + 1)));
    if (work == nullptr)
        return IniMemoryFull;
    char* end = work.get();
    for (; *text != '\0'; ++text)
        end = encode(*text, end);
    return storeExact(work, end, out);
}

int decodeIniValue(const char* text, IniString& out) noexcept {
    text = text != nullptr ? text : "";
    const IniString work(static_cast<char*>(std::malloc(std::strlen(text) + 1)));
    if (work == nullptr)
        return IniMemoryFull;
    char* end = work.get();
    while (*text != '\0') {
        char c = *text++;
        if (c == '\\') {
            if (*text == '\0')
                break;
            c = *text++;
            c = decodeEscape(c, text);
        }
        *end++ = c;
    }
    return storeExact(work, end, out);
}

} // namespace vyini
