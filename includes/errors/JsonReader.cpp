#include "errors/JsonReader.h"

#include "errors/JsonString.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace vyerr {

namespace {

// The documents nest two deep. Deeper nesting than this is refused, so that no text exhausts the stack.
constexpr int maxNesting = 256;

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
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
            if (jsonHexQuad(at + 1, at + 5) < 0)
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

/// After an element: moves `at` past the comma and the blanks, to the next element or the closing character.
/// False at an error.
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

/// Reads a member's key and colon. Returns the place of its value.
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
    if (depth == maxNesting)
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
        if (*word != 'n') // a boolean's token holds the value where others hold a place
            token.start = reinterpret_cast<const char*>(static_cast<std::uintptr_t>(*word == 't'));
        return position + length;
    }
    return fail(token, nullptr, JsonError::None);
}

// The first character decides which kind of value can follow.
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

/// Whether a string, decoded, is the expected text.
bool decodesTo(const JsonToken& string, const char* expected) noexcept {
    const char* at = string.start;
    const char* const end = string.start + string.length;
    while (at != end) {
        char decoded[4];
        std::size_t length = 0;
        at = decodeJsonCharacter(at, end, decoded, length);
        if (at == nullptr || std::strncmp(expected, decoded, length) != 0)
            return false;
        expected += length;
    }
    return *expected == '\0';
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

const char* localNumberText(const JsonToken& token, const char* sample, NumberText& room) noexcept {
    if (std::strchr(sample, ',') == nullptr)
        return token.start;
    const std::size_t length = std::min(static_cast<std::size_t>(token.length), sizeof room - 1);
    std::memcpy(room, token.start, length);
    room[length] = '\0';
    if (char* const separator = std::strpbrk(room, ".,"))
        *separator = ',';
    return &room[0]; // cppcheck takes the name of the array for an integer
}

bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept {
    if (token.flag == 0) {
        int scanned = 0;
        if (std::sscanf(token.start, "%i", &scanned) != 1)
            return false;
        *value = scanned;
        return true;
    }
    NumberText sample;
    std::snprintf(sample, sizeof sample, "%.1f", 1.5);
    NumberText room;
    double scanned = 0;
    if (std::sscanf(localNumberText(token, sample, room), "%lg", &scanned) != 1)
        return false;
    // Written so that a NaN does not fit either.
    const bool fits = scanned > -2147483649.0 && scanned < 2147483648.0;
    *value = fits ? static_cast<std::int32_t>(scanned) : INT32_MIN;
    return true;
}

} // namespace vyerr
