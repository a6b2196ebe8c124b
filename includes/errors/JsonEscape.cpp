#include "errors/JsonEscape.h"

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

} // namespace vyerr
