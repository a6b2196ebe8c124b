#include "errors/JsonString.h"

#include "vybase/hex.h"
#include "vybase/utf8.h"
#include <cstring>

namespace vyerr {

namespace {

/// Decodes what follows "\u". Returns the place after it, or null.
const char* decodeUnicode(const char* digits, const char* end, char* out, std::size_t& outLength) noexcept {
    const std::int32_t first = jsonHexQuad(digits, end);
    if (first <= 0)
        return nullptr;
    const char* next = digits + 4;
    auto codePoint = static_cast<std::uint32_t>(first);
    if (codePoint >= 0xD800 && codePoint < 0xE000) {
        if (end - next < 2 || next[0] != '\\' || next[1] != 'u')
            return nullptr;
        const std::int32_t second = jsonHexQuad(next + 2, end);
        if (second < 0)
            return nullptr;
        next += 6;
        codePoint = 0x10000 + ((codePoint - 0xD800) << 10) +
                    ((static_cast<std::uint32_t>(second) - 0xDC00u) & 0xFFFFu);
        if (codePoint >= 0x200000)
            return nullptr;
    }
    outLength = vybase::encodeUtf8(codePoint, out);
    return next;
}

/// The letter after the backslash; 0 when the byte needs no escape, 'u' when it needs four hex digits.
char escapeLetter(unsigned char byte) noexcept {
    switch (byte) {
    case '\b':
        return 'b';
    case '\t':
        return 't';
    case '\n':
        return 'n';
    case '\f':
        return 'f';
    case '\r':
        return 'r';
    case '"':
        return '"';
    case '\\':
        return '\\';
    default:
        return byte < 32 || byte == 127 ? 'u' : '\0';
    }
}

} // namespace

std::int32_t jsonHexQuad(const char* digits, const char* end) noexcept {
    if (end - digits < 4)
        return -1;
    std::int32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const int digit = vybase::hexValue(digits[i]);
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

const char* decodeJsonCharacter(const char* at, const char* end, char* out, std::size_t& outLength) noexcept {
    outLength = 1;
    out[0] = *at;
    if (*at != '\\')
        return *at != '\0' ? at + 1 : nullptr;
    if (++at == end)
        return nullptr;
    switch (*at) {
    case 'b':
        out[0] = '\b';
        break;
    case 'f':
        out[0] = '\f';
        break;
    case 'n':
        out[0] = '\n';
        break;
    case 'r':
        out[0] = '\r';
        break;
    case 't':
        out[0] = '\t';
        break;
    case 'u':
        return decodeUnicode(at + 1, end, out, outLength);
    case '"':
    case '/':
    case '\\':
        out[0] = *at;
        break;
    default:
        return nullptr;
    }
    return at + 1;
}

char* unescapeJsonString(const char* body, std::int64_t length, char* destination) noexcept {
    const char* const end = body + length;
    while (body != end) {
        char decoded[4];
        std::size_t decodedLength = 0;
        body = decodeJsonCharacter(body, end, decoded, decodedLength);
        if (body == nullptr) {
            *destination = '\0';
            return nullptr;
        }
        std::memcpy(destination, decoded, decodedLength);
        destination += decodedLength;
    }
    *destination = '\0';
    return destination;
}

std::size_t escapedJsonLength(const char* text) noexcept {
    std::size_t length = 0;
    for (; *text != '\0'; ++text) {
        const char letter = escapeLetter(static_cast<unsigned char>(*text));
        length += letter == '\0' ? 1 : letter == 'u' ? 6 : 2;
    }
    return length;
}

char* escapeJsonString(char* destination, const char* text) noexcept {
    for (; *text != '\0'; ++text) {
        const auto byte = static_cast<unsigned char>(*text);
        const char letter = escapeLetter(byte);
        if (letter == '\0') {
            *destination++ = *text;
            continue;
        }
        *destination++ = '\\';
        *destination++ = letter;
        if (letter == 'u') {
            *destination++ = '0';
            *destination++ = '0';
            *destination++ = vybase::hexDigits[byte >> 4];
            *destination++ = vybase::hexDigits[byte & 15];
        }
    }
    return destination;
}

} // namespace vyerr
