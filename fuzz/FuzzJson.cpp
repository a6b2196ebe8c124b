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
#include <vector>

namespace {

using namespace vyerr;
using namespace vykelfuzz;

/// Where the value at `at` ends by a plain reading of the grammar; npos when there is none. The text ends in
/// the NUL that std::string adds.
std::size_t modelEnd(const std::string& s, std::size_t at, int depth = 0) {
    constexpr std::size_t none = std::string::npos;
    const auto isDigit = [&](std::size_t i) { return s[i] >= '0' && s[i] <= '9'; };
    const auto skip = [&](std::size_t i, const char* set) {
        return std::min(s.find_first_not_of(set, i), s.size());
    };
    const auto blanks = [&](std::size_t i) { return skip(i, " \t\r\n"); };
    const auto digits = [&](std::size_t i) { return skip(i, "0123456789"); };
    if (s[at] == '"') {
        for (++at; s[at] != '"'; ++at) {
            if (static_cast<unsigned char>(s[at]) < 32 || s[at] == 127)
                return none;
            if (s[at] != '\\')
                continue;
            const bool isUnicode = s[++at] == 'u';
            if (isUnicode ? skip(at + 1, "0123456789abcdefABCDEF") < at + 5
                          : std::string("\"/\\bfnrt").find(s[at]) == none)
                return none;
            at += isUnicode ? 4 : 0;
        }
        return at + 1;
    }
    if (s[at] == '{' || s[at] == '[') {
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
    for (const std::string word : {"false", "true", "null"})
        if (s.compare(at, word.size(), word) == 0)
            return at + word.size();
    if (s[at] != '-' && !isDigit(at))
        return none;
    at = digits(at + 1);
    at = s[at] == '.' ? digits(at + 1) : at;
    const bool hasExponent =
        (s[at] == 'e' || s[at] == 'E') && (s[at + 1] == '+' || s[at + 1] == '-' || isDigit(at + 1));
    return hasExponent ? digits(at + 2) : at;
}

/// A string's text as far as it can be decoded.
std::string decoded(const JsonToken& token) {
    std::vector<char> text(static_cast<std::size_t>(token.length) + 1);
    unescapeJsonString(token.start, token.length, text.data());
    return text.data();
}

void readAnything(const std::string& text) {
    const std::vector<char> exact(text.c_str(), text.c_str() + text.size() + 1);
    JsonToken token;
    const char* const end = parseJsonValue(exact.data(), &token);
    const std::size_t expected = modelEnd(text, 0);
    check(end == (expected == std::string::npos ? nullptr : exact.data() + expected));
    check((end == nullptr) == (token.type == JsonType::Error));
    if (token.type == JsonType::String)
        check(decoded(token).size() <= text.size());
    std::int32_t number = 0;
    if (token.type == JsonType::Number && jsonNumberToInt(token, &number) && token.flag != 0) {
        const double value = std::trunc(std::strtod(text.c_str(), nullptr));
        check(number == (std::fabs(value) < 2147483648.0 ? static_cast<std::int32_t>(value) : INT32_MIN));
    }
    const char* const line = findField(exact.data(), "line");
    check(line == nullptr || (line > exact.data() && line <= exact.data() + text.size()));
}

/// What was added at the end of a container, without the comma that separates it from what was there before.
std::string added(const std::string& before, const std::string& after) {
    const std::size_t inside = before.size() - 1;
    const char last = before[before.find_last_not_of(" \t\r\n", inside - 1)];
    const std::size_t comma = last == '{' || last == '[' ? 0 : 1;
    check(after.compare(0, inside, before, 0, inside) == 0 && after.back() == before.back());
    check(comma == 0 || after[inside] == ',');
    return after.substr(inside + comma, after.size() - 1 - inside - comma);
}

/// Adds to a document that some other text began.
void addFields(const std::string& text) {
    vykeltest::OwnedStatus status;
    check(status.reallocate(&status, static_cast<std::uint32_t>(text.size() + 2)));
    layStatusText(status.json, status.capacity, text.c_str());
    if (char* cursor = errorInfoEnd(status.json)) {
        cursor[1] = '\0'; // what follows the container is no part of the document
        layStatusText(status.json, status.capacity, nullptr);
        const StatusTextGrowth growth{growStatusText, &status};
        const char* const key = *cursor == '}' ? "~\n" : nullptr;
        const std::string prefix = key != nullptr ? "\"~\\n\":" : "";
        const auto add = [&](auto writer, auto... value) {
            const std::string before = status.json;
            cursor = writer(cursor, key, value..., growth);
            check(cursor != nullptr && status.json[status.capacity - 1] == 'J');
            const std::string field = added(before, status.json);
            check(field.compare(0, prefix.size(), prefix) == 0);
            return field.substr(prefix.size());
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
    }
    status.code = -1;
    vykel::StatusBlock block = vykel::makeStatusBlock();
    statusToBlock(&status, &block);
    check(block.code == -1 && block.component[9] == '\0' && block.file[100] == '\0');
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = textOf(data, size).c_str();
    readAnything(text);
    addFields(text);
    return 0;
}
