#include "ini/IniText.h"

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

} // namespace vyini
