#include "errors/JsonReader.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace vyerr {

namespace {

// The documents nest two deep; a text that nests deeper than this is refused rather than exhaust the stack.
constexpr int deepestNesting = 256;

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

int hexDigit(char character) noexcept {
    if (isDigit(character))
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The value of the four hex digits before `end`, or -1. The text's NUL is no hex digit and stops it, too.
std::int32_t hexQuad(const char* digits, const char* end) noexcept {
    if (end - digits < 4)
        return -1;
    std::int32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        const int digit = hexDigit(digits[i]);
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

const char* fail(JsonToken& token, const char* position, JsonError error) noexcept {
    token = {JsonType::Error, position, static_cast<std::int64_t>(error), 0};
    return nullptr;
}

const char* succeed(JsonToken& token, JsonType type, const char* start, const char* end,
                    bool isFloat = false) noexcept {
    token = {type, start, end - start, isFloat ? 1 : 0};
    return end;
}

const char* parseString(const char* quote, JsonToken& token) noexcept {
    const char* const start = quote + 1;
    for (const char* at = start;; ++at) {
        const auto byte = static_cast<unsigned char>(*at);
        if (byte == '"') {
            succeed(token, JsonType::String, start, at);
            return at + 1;
        }
        if (byte < 32 || byte == 127)
            return fail(token, at, JsonError::BadString);
        if (byte != '\\')
            continue;
        const char* const escape = at++;
        if (*at == '\0')
            return fail(token, at, JsonError::BadString);
        if (*at == 'u') {
            if (hexQuad(at + 1, at + 5) < 0)
                return fail(token, escape, JsonError::BadEscape);
            at += 4;
        } else if (std::strchr("\"/\\bfnrt", *at) == nullptr) {
            return fail(token, escape, JsonError::BadEscape);
        }
    }
}

const char* parseNumber(const char* start, JsonToken& token) noexcept {
    bool isFloat = false;
    const char* at = start + 1;
    while (isDigit(*at))
        ++at;
    if (*at == '.') {
        isFloat = true;
        ++at;
        while (isDigit(*at))
            ++at;
    }
    if ((*at == 'e' || *at == 'E') && (at[1] == '+' || at[1] == '-' || isDigit(at[1]))) {
        isFloat = true;
        at += 2;
        while (isDigit(*at))
            ++at;
    }
    return succeed(token, JsonType::Number, start, at, isFloat);
}

const char* parseValue(const char* position, JsonToken& token, int depth) noexcept;

/// Behind an element: steps over the comma and its blanks. Leaves `at` on the next element or the closing
/// character; false at an error.
bool passComma(const char*& at, char closing, JsonToken& token, JsonError notClosed) noexcept {
    at = skipJsonBlanks(at);
    if (*at == closing)
        return true;
    if (*at != ',') {
        fail(token, at, *at == '\0' ? notClosed : JsonError::UnexpectedCharacter);
        return false;
    }
    at = skipJsonBlanks(at + 1);
    if (*at == closing) {
        fail(token, at, JsonError::TrailingComma);
        return false;
    }
    return true;
}

/// Reads a member's key and colon; returns the place of its value.
const char* parseKey(const char* at, JsonToken& token) noexcept {
    if (*at != '"')
        return fail(token, at, JsonError::UnexpectedCharacter);
    at = parseString(at, token);
    if (at == nullptr)
        return nullptr;
    at = skipJsonBlanks(at);
    if (*at != ':')
        return fail(token, at, JsonError::NoColon);
    return skipJsonBlanks(at + 1);
}

const char* parseContainer(const char* start, JsonToken& token, int depth) noexcept {
    const bool isObject = *start == '{';
    const char closing = isObject ? '}' : ']';
    const JsonError notClosed = isObject ? JsonError::ObjectNotClosed : JsonError::ArrayNotClosed;
    if (depth == deepestNesting)
        return fail(token, start, notClosed);
    const char* at = skipJsonBlanks(start + 1);
    while (*at != closing) {
        if (*at != '\0' && isObject && (at = parseKey(at, token)) == nullptr)
            return nullptr;
        if (*at == '\0')
            return fail(token, at, notClosed);
        at = parseValue(at, token, depth + 1);
        if (at == nullptr || !passComma(at, closing, token, notClosed))
            return nullptr;
    }
    return succeed(token, isObject ? JsonType::Object : JsonType::Array, start, at + 1);
}

const char* parseWord(const char* position, JsonToken& token) noexcept {
    for (const char* const word : {"true", "false", "null"}) {
        const std::size_t length = std::strlen(word);
        if (std::strncmp(position, word, length) != 0)
            continue;
        succeed(token, *word == 'n' ? JsonType::Null : JsonType::Boolean, position, position + length);
        if (*word != 'n') // the value itself stands in place of a pointer
            token.start = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(*word == 't'));
        return position + length;
    }
    return fail(token, nullptr, JsonError::None);
}

// The first character alone decides which kind of value can follow.
const char* parseValue(const char* position, JsonToken& token, int depth) noexcept {
    switch (*position) {
    case '"':
        return parseString(position, token);
    case '{':
    case '[':
        return parseContainer(position, token, depth);
    default:
        break;
    }
    return *position == '-' || isDigit(*position) ? parseNumber(position, token) : parseWord(position, token);
}

std::size_t encodeUtf8(std::uint32_t codePoint, char* out) noexcept {
    const auto byte = [](std::uint32_t value) {
        return static_cast<char>(static_cast<unsigned char>(value));
    };
    if (codePoint < 0x80) {
        out[0] = byte(codePoint);
        return 1;
    }
    const std::size_t length = codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
    for (std::size_t i = length - 1; i > 0; --i, codePoint >>= 6)
        out[i] = byte(0x80 | (codePoint & 0x3F));
    out[0] = byte((0xF00u >> length) | codePoint);
    return length;
}

/// Decodes what follows "\u". Returns the place behind it, or null.
const char* decodeUnicode(const char* digits, const char* end, char* out, std::size_t& outLength) noexcept {
    const std::int32_t first = hexQuad(digits, end);
    if (first <= 0)
        return nullptr;
    const char* next = digits + 4;
    auto codePoint = static_cast<std::uint32_t>(first);
    if (codePoint >= 0xD800 && codePoint < 0xE000) {
        if (end - next < 2 || next[0] != '\\' || next[1] != 'u')
            return nullptr;
        const std::int32_t second = hexQuad(next + 2, end);
        if (second < 0)
            return nullptr;
        next += 6;
        codePoint = 0x10000 + ((codePoint - 0xD800) << 10) +
                    ((static_cast<std::uint32_t>(second) - 0xDC00u) & 0xFFFFu);
        if (codePoint >= 0x200000)
            return nullptr;
    }
    outLength = encodeUtf8(codePoint, out);
    return next;
}

/// Decodes the character at the front of an escaped body into 1 to 4 bytes. Returns the place behind it, or
/// null at a bad or cut-off escape or a NUL.
const char* decodeCharacter(const char* at, const char* end, char* out, std::size_t& outLength) noexcept {
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

bool decodesTo(const JsonToken& string, const char* expected) noexcept {
    const char* at = string.start;
    const char* const end = string.start + string.length;
    while (at != end) {
        char decoded[4];
        std::size_t length = 0;
        at = decodeCharacter(at, end, decoded, length);
        if (at == nullptr || std::strncmp(expected, decoded, length) != 0)
            return false;
        expected += length;
    }
    return *expected == '\0';
}

/// The C runtime reads a number by the locale; this writes the point as it wants it.
const char* withLocalSeparator(const char* text, char (&buffer)[64]) noexcept {
    std::snprintf(buffer, sizeof buffer, "%.1f", 1.5);
    if (std::strchr(buffer, ',') == nullptr)
        return text;
    std::snprintf(buffer, sizeof buffer, "%s", text);
    buffer[strcspn(buffer, ".,")] = ',';
    return buffer;
}

} // namespace

const char* skipJsonBlanks(const char* position) noexcept {
    while (isJsonBlank(*position))
        ++position;
    return position;
}

const char* parseJsonValue(const char* position, JsonToken* token) noexcept {
    JsonToken local = {};
    return parseValue(position, token != nullptr ? *token : local, 0);
}

const char* findField(const char* text, const char* key) noexcept {
    const char* at = skipJsonBlanks(text);
    if (*at != '{')
        return nullptr;
    at = skipJsonBlanks(at + 1);
    while (*at == '"') {
        JsonToken name;
        const char* const value = parseKey(at, name);
        if (value == nullptr)
            return nullptr;
        if (decodesTo(name, key))
            return value;
        at = parseJsonValue(value, nullptr);
        if (at == nullptr)
            return nullptr;
        at = skipJsonBlanks(at);
        if (*at != ',')
            return nullptr;
        at = skipJsonBlanks(at + 1);
    }
    return nullptr;
}

char* unescapeJsonString(const char* body, std::int64_t length, char* destination) noexcept {
    const char* const end = body + length;
    while (body != end) {
        char decoded[4];
        std::size_t decodedLength = 0;
        body = decodeCharacter(body, end, decoded, decodedLength);
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

bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept {
    if (token.flag == 0) {
        int scanned = 0;
        if (std::sscanf(token.start, "%i", &scanned) != 1)
            return false;
        *value = scanned;
        return true;
    }
    char buffer[64];
    double scanned = 0;
    if (std::sscanf(withLocalSeparator(token.start, buffer), "%lg", &scanned) != 1)
        return false;
    // Written so that a NaN, too, takes the second branch.
    const bool fits = scanned > -2147483649.0 && scanned < 2147483648.0;
    *value = fits ? static_cast<std::int32_t>(scanned) : INT32_MIN;
    return true;
}

} // namespace vyerr
