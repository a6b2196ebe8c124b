// The JSON text of a Status: any text may be read; one that is a closed container also takes fields.
#include "errors/ErrorInfoText.h"
#include "errors/JsonEscape.h"
#include "errors/JsonNumber.h"
#include "errors/JsonReader.h"
#include "errors/StatusBlocks.h"
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

/// A string's text as far as it can be decoded.
std::string decoded(const vyerr::JsonToken& token) {
    std::vector<char> text(static_cast<std::size_t>(token.length) + 1);
    vyerr::unescapeJsonString(token.start, token.length, text.data());
    return text.data();
}

void readAnything(const std::string& text) {
    vyerr::JsonToken token;
    const char* const end = vyerr::parseJsonValue(text.c_str(), &token);
    check(end == nullptr || (end > text.c_str() && end <= text.c_str() + text.size()));
    std::int32_t number = 0;
    if (token.type == vyerr::JsonType::Number)
        vyerr::jsonNumberToInt(token, &number);
    if (token.type == vyerr::JsonType::String)
        decoded(token);
    vyerr::findField(text.c_str(), "line");
}

/// Adds fields to a document that some other text began: the text must stay a document and hold them.
void addFields(const std::string& text) {
    vyerr::Status status;
    vyerr::initStatus(&status);
    check(status.reallocate(&status, static_cast<std::uint32_t>(text.size() + 2)));
    vyerr::layStatusText(status.json, status.capacity, text.c_str());
    char* cursor = vyerr::errorInfoEnd(status.json);
    if (cursor != nullptr && *cursor == '}' && vyerr::findField(text.c_str(), "fuzz") == nullptr) {
        cursor[1] = '\0'; // what follows the container is no part of the document
        vyerr::layStatusText(status.json, status.capacity, nullptr);
        const vyerr::StatusTextGrowth growth{vyerr::growStatusText, &status};
        cursor = vyerr::addStringField(cursor, "fuzz", text.c_str(), growth);
        check(cursor != nullptr && vyerr::addIntField(cursor, "n", -1, growth) != nullptr);
        check(vyerr::errorInfoEnd(status.json) != nullptr && status.json[status.capacity - 1] == 'J');
        vyerr::JsonToken token;
        const char* const value = vyerr::findField(status.json, "fuzz");
        check(value != nullptr && vyerr::parseJsonValue(value, &token) != nullptr);
        check(decoded(token) == text);
    }
    status.code = -1;
    vykel::StatusBlock block = vykel::makeStatusBlock();
    vyerr::statusToBlock(&status, &block);
    check(block.code == -1 && block.component[9] == '\0' && block.file[100] == '\0');
    vyerr::releaseStatus(&status);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data),
                           strnlen(reinterpret_cast<const char*>(data), size));
    readAnything(text);
    addFields(text);
    return 0;
}
