#include "errors/ErrorInfoText.h"

#include "errors/JsonReader.h"
#include "errors/JsonString.h"
#include <cstdio>
#include <cstring>

namespace vyerr {

namespace {

constexpr char endMarker = 'J';
constexpr std::size_t numberBufferSize = 64;

bool isOpening(char character) noexcept {
    return character == '{' || character == '[';
}

bool matches(char opening, char closing) noexcept {
    return (opening == '{' && closing == '}') || (opening == '[' && closing == ']');
}

/// Whether `closing` is the closing brace or bracket of a container without elements.
bool closesEmptyContainer(const char* closing) noexcept {
    if (*closing != '}' && *closing != ']')
        return false;
    const char* before = closing - 1;
    while (isJsonBlank(*before))
        --before;
    return matches(*before, *closing);
}

/// Opens a gap of `count` bytes, and writes the comma that the place needs. Returns where to write the field,
/// or null when there is no room.
char* openFieldGap(char* cursor, std::size_t count) noexcept {
    const bool atStart = isOpening(*cursor);
    char* const insertion = atStart ? cursor + 1 : cursor;
    const char* const next = skipJsonBlanks(insertion);
    const bool empty =
        *insertion == '\0' || closesEmptyContainer(insertion) || (atStart && matches(*cursor, *next));
    const std::size_t needed = count + (empty ? 0 : 1);

    const std::size_t tail = std::strlen(insertion);
    const char* const freeArea = insertion + tail + 1;
    std::size_t room = 0;
    while (room < needed && freeArea[room] == '\0')
        ++room;
    if (room < needed)
        return nullptr;

    std::memmove(insertion + needed, insertion, tail + 1);
    if (empty)
        return insertion;
    if (atStart) {
        insertion[needed - 1] = ',';
        return insertion;
    }
    *insertion = ',';
    return insertion + 1;
}

/// Writes the key, then the value: `writeValue(position)` returns the end of what it wrote.
template <class WriteValue>
char* addField(char* cursor, const char* key, std::size_t valueLength, StatusTextGrowth growth,
               WriteValue writeValue) noexcept {
    const std::size_t room = valueLength + (key != nullptr ? escapedJsonLength(key) + 3 : 0);
    while (cursor != nullptr) {
        if (char* at = openFieldGap(cursor, room)) {
            if (key != nullptr) {
                *at++ = '"';
                at = escapeJsonString(at, key);
                *at++ = '"';
                *at++ = ':';
            }
            return writeValue(at);
        }
        if (growth.grow == nullptr)
            return nullptr;
        cursor = growth.grow(cursor, growth.context);
    }
    return nullptr;
}

char* addPlainField(char* cursor, const char* key, const char* text, std::size_t length,
                    StatusTextGrowth growth) noexcept {
    return addField(cursor, key, length, growth, [=](char* at) noexcept {
        std::memcpy(at, text, length);
        return at + length;
    });
}

} // namespace

char* layStatusText(char* buffer, std::size_t size, const char* text) noexcept {
    const std::size_t length = std::strlen(text != nullptr ? text : buffer);
    if (size < length + 2)
        return nullptr;
    if (text != nullptr)
        std::memcpy(buffer, text, length);
    std::memset(buffer + length, 0, size - 1 - length);
    buffer[size - 1] = endMarker;
    return buffer + length - 1;
}

char* errorInfoEnd(char* text) noexcept {
    const char* const end = isOpening(*text) ? parseJsonValue(text, nullptr) : nullptr;
    return end != nullptr ? text + (end - text) - 1 : nullptr;
}

char* addStringField(char* cursor, const char* key, const char* value, StatusTextGrowth growth) noexcept {
    if (cursor == nullptr)
        return nullptr;
    return addField(cursor, key, escapedJsonLength(value) + 2, growth, [=](char* at) noexcept {
        *at++ = '"';
        at = escapeJsonString(at, value);
        *at++ = '"';
        return at;
    });
}

char* addIntField(char* cursor, const char* key, std::int32_t value, StatusTextGrowth growth) noexcept {
    char digits[numberBufferSize];
    const int length = std::snprintf(digits, sizeof digits, "%i", static_cast<int>(value));
    return addPlainField(cursor, key, digits, static_cast<std::size_t>(length), growth);
}

char* addUIntField(char* cursor, const char* key, std::uint32_t value, StatusTextGrowth growth) noexcept {
    char digits[numberBufferSize];
    const int length = std::snprintf(digits, sizeof digits, "%u", static_cast<unsigned>(value));
    return addPlainField(cursor, key, digits, static_cast<std::size_t>(length), growth);
}

char* addObjectField(char* cursor, const char* key, StatusTextGrowth growth) noexcept {
    return addPlainField(cursor, key, "{}", 2, growth);
}

} // namespace vyerr
