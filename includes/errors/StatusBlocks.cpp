#include "errors/StatusBlocks.h"

#include "errors/JsonReader.h"
#include "errors/JsonString.h"
#include <algorithm>
#include <cstring>

namespace vyerr {

namespace {

constexpr std::size_t fileRoom = sizeof(StatusBlock::file) - 1;
constexpr std::size_t keptAtEachEnd = 49; // of a file path that is too long

/// Copies a text into a field of fixed size, NUL-terminated and zero-padded.
template <std::size_t size>
void fillField(char (&field)[size], const char* text, std::size_t length) noexcept {
    length = std::min(length, size - 1);
    std::memcpy(field, text, length);
    std::memset(field + length, 0, size - length);
}

void fillFile(StatusBlock* block, const char* file) noexcept {
    const std::size_t length = std::strlen(file);
    fillField(block->file, file, length);
    if (length > fileRoom) {
        std::memcpy(block->file + keptAtEachEnd, "..", 2);
        std::memcpy(block->file + keptAtEachEnd + 2, file + length - keptAtEachEnd, keptAtEachEnd);
    }
}

/// Decodes the last bytes of a string field, at most `maxBytes`, which `text` must have room for. Leaves
/// `text` as it is when there is no such field.
template <std::size_t size>
void lastOfField(const char* document, const char* key, std::int64_t maxBytes, char (&text)[size]) noexcept {
    const char* const value = findField(document, key);
    JsonToken token;
    if (value == nullptr || parseJsonValue(value, &token) == nullptr || token.type != JsonType::String)
        return;
    const std::int64_t length = std::min(token.length, maxBytes);
    unescapeJsonString(token.start + token.length - length, length, text);
}

/// The field "line"; 0 when it is missing or not a number.
std::int32_t lineOf(const char* document) noexcept {
    std::int32_t line = 0;
    const char* const value = findField(document, "line");
    JsonToken token;
    if (value != nullptr && parseJsonValue(value, &token) != nullptr && token.type == JsonType::Number)
        jsonNumberToInt(token, &line);
    return line;
}

} // namespace

bool setStatusBlock(StatusBlock* block, std::int32_t code, const char* component, const char* file,
                    std::uint32_t line) noexcept {
    if (!replacesCode(block->code, code))
        return false;
    block->code = code;
    if (block->structSize < sizeof(StatusBlock))
        return true;
    fillField(block->component, component, std::strlen(component));
    fillFile(block, file);
    block->line = line;
    block->reserved = 0;
    return true;
}

void storeError(StatusBlock* block, vykel::StatusCode code, RaiseSite site) noexcept {
    setStatusBlock(block, vykel::toInteger(code), componentName, site.file,
                   static_cast<std::uint32_t>(site.line));
}

bool statusToBlock(const Status* status, StatusBlock* block) noexcept {
    if (status->code == 0 || block->code < 0)
        return true;
    char component[16] = "";
    char file[fileRoom + 1] = "";
    std::int32_t line = 0;
    if (status->json != nullptr) {
        lastOfField(status->json, "component", sizeof(StatusBlock::component) - 1, component);
        lastOfField(status->json, "file", static_cast<std::int64_t>(fileRoom), file);
        line = lineOf(status->json);
    }
    setStatusBlock(block, status->code, component, file, static_cast<std::uint32_t>(line));
    return true;
}

} // namespace vyerr
