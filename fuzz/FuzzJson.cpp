// The JSON text of a Status: any text may be read, and a plain reader finds the same in it. One that is a
// closed container also takes fields and elements, which read back.
#include "errors/ErrorInfoText.h"
#include "errors/JsonReader.h"
#include "errors/JsonString.h"
#include "errors/StatusBlocks.h"
#include "Fuzz.h"
#include "support/OwnedStatus.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <regex>
#include <vector>

namespace {

using namespace vyerr;
using namespace vykelfuzz;

/// Where the value at `at` ends by a plain reading of the grammar; npos when there is none.
std::size_t modelEnd(const std::string& s, std::size_t at, int depth = 0) {
    static const std::regex scalar(R"("([^\x01-\x1F\x7F"\\]|\\(["\\/bfnrt]|u[0-9a-fA-F]{4}))*")"
                                   R"(|[-0-9][0-9]*(\.[0-9]*)?([eE][-+0-9][0-9]*)?|false|true|null)");
    constexpr std::size_t none = std::string::npos;
    if (s[at] != '{' && s[at] != '[') {
        std::cmatch match;
        const bool found = std::regex_search(&s[at], match, scalar, std::regex_constants::match_continuous);
        return found ? at + static_cast<std::size_t>(match.length()) : none;
    }
    const auto blanks = [&](std::size_t i) { return std::min(s.find_first_not_of(" \t\r\n", i), s.size()); };
    const bool isObject = s[at] == '{';
    const char closing = isObject ? '}' : ']';
    if (depth == 256 || s[at = blanks(at + 1)] == closing)
        return depth == 256 ? none : at + 1;
    for (;; at = blanks(at + 1)) {
        if (isObject) {
            const std::size_t key = s[at] == '"' ? modelEnd(s, at) : none;
            if (key == none || s[at = blanks(key)] != ':')
                return none;
            at = blanks(at + 1);
        }
        at = modelEnd(s, at, depth + 1);
        if (at == none || (s[at = blanks(at)] != ',' && s[at] != closing))
            return none;
        if (s[at] == closing)
            return at + 1;
    }
}

/// A string's text as far as it can be decoded.
std::string decoded(const JsonToken& token) {
    std::vector<char> text(static_cast<std::size_t>(token.length) + 1);
    const char* const end = unescapeJsonString(token.start, token.length, text.data());
    return text.data() + std::string(end == nullptr ? " and no more" : "");
}

void readAnything(const std::string& text) {
    const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
    JsonToken token;
    const char* const end = parseJsonValue(exact.data(), &token);
    const std::size_t expected = modelEnd(text, 0);
    check(end == (expected == std::string::npos ? nullptr : exact.data() + expected));
    check((end == nullptr) == (token.type == JsonType::Error));
    if (token.type == JsonType::String)
        note(decoded(token));
    std::int32_t number = 0;
    if (token.type == JsonType::Number && jsonNumberToInt(token, &number) && token.flag != 0) {
        const double value = std::trunc(std::strtod(text.c_str(), nullptr));
        check(number == (std::fabs(value) < 2147483648.0 ? static_cast<std::int32_t>(value) : INT32_MIN));
    }
    note(token.flag != 0 || token.length < 10 ? std::to_string(number) : "");
    const char* const line = findField(exact.data(), "line");
    note(line != nullptr ? line : "");
    check(line == nullptr || (line > exact.data() && line <= exact.data() + text.size()));
}

/// Adds to a document that some other text began.
void addFields(const std::string& text) {
    vykeltest::OwnedStatus status;
    check(status.reallocate(&status, static_cast<std::uint32_t>(text.size() + 2)));
    note(std::to_string(status.capacity));
    layStatusText(status.json, status.capacity, text.c_str());
    if (char* cursor = errorInfoEnd(status.json)) {
        cursor[1] = '\0'; // what follows the container is no part of the document
        layStatusText(status.json, status.capacity, nullptr);
        const StatusTextGrowth growth{growStatusText, &status};
        const char* const key = *cursor == '}' ? "~\n" : nullptr;
        char* const place = text.size() % 2 == 0 ? status.json : cursor; // its start, or its end
        check(addStringField(place, key, "first", growth) != nullptr);
        cursor = errorInfoEnd(status.json);
        const std::string prefix = key != nullptr ? "\"~\\n\":" : "";
        const auto add = [&](auto writer, auto... value) {
            const std::string before = std::string(status.json, cursor) + ',' + prefix;
            const std::string end = cursor;
            cursor = writer(cursor, key, value..., growth);
            check(cursor != nullptr && cursor == end && status.json[status.capacity - 1] == 'J');
            const std::string after(status.json, cursor);
            check(after.compare(0, before.size(), before) == 0);
            return after.substr(before.size());
        };
        std::uint32_t number = 0;
        std::memcpy(&number, text.data(), std::min(sizeof number, text.size()));
        check(add(addUIntField, number) == std::to_string(number));
        check(add(addIntField, static_cast<std::int32_t>(number)) ==
              std::to_string(static_cast<std::int32_t>(number)));
        const std::string string = add(addStringField, text.c_str());
        JsonToken token;
        check(parseJsonValue(string.c_str(), &token) == string.c_str() + string.size() &&
              decoded(token) == text);
        check(add(addObjectField) == "{}");
        check(addStringField(cursor - 1, text.c_str(), "", growth) != nullptr);
        check(errorInfoEnd(status.json) == status.json + std::strlen(status.json) - 1);
        note(std::to_string(status.capacity));
    }
    vykel::StatusBlock block = vykel::makeStatusBlock();
    check(statusToBlock(&status, &block) && block.line == 0); // there is no error
    status.code = -1;
    statusToBlock(&status, &block);
    check(block.code == -1 && block.component[9] == '\0' && block.file[100] == '\0');
    note(std::string(status.json) + block.component + '|' + block.file + '|' + std::to_string(block.line));
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = textOf(data, size) + 'f'; // one more, which must not be read
    note(decoded({JsonType::String, bytes.data(), static_cast<std::int64_t>(size), 0}));
    const std::string text = textOf(data, size).c_str();
    readAnything(text);
    addFields(text);
    return 0;
}
