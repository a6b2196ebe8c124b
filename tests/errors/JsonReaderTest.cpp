#include "errors/JsonReader.h"

#include "errors/JsonEscape.h"
#include "errors/JsonNumber.h"
#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vyerr {

TEST(JsonReader, DescribesValues) {
    const struct {
        const char* text;
        JsonType type;
        std::int64_t start;
        std::int64_t length;
        std::int64_t flag;
        std::int64_t end;
    } cases[] = {
        {"null", JsonType::Null, 0, 4, 0, 4},
        {"nullify", JsonType::Null, 0, 4, 0, 4},
        {"\"a\\\"\\u00e9\"x", JsonType::String, 1, 9, 0, 11},
        {"\"\"", JsonType::String, 1, 0, 0, 2},
        {"-", JsonType::Number, 0, 1, 0, 1},
        {"007,", JsonType::Number, 0, 3, 0, 3},
        {"1.", JsonType::Number, 0, 2, 1, 2},
        {"1.5e+3]", JsonType::Number, 0, 6, 1, 6},
        {"1e", JsonType::Number, 0, 1, 0, 1},
        {"{ \"a\" :\t1 ,\r\n\"b\":[ true , {} ] } ", JsonType::Object, 0, 32, 0, 32},
        {"[[],[[]]]", JsonType::Array, 0, 9, 0, 9},
    };
    for (const auto& each : cases) {
        JsonToken token;
        EXPECT_EQ(parseJsonValue(each.text, &token), each.text + each.end) << each.text;
        EXPECT_EQ(token.type, each.type) << each.text;
        EXPECT_EQ(token.start, each.text + each.start) << each.text;
        EXPECT_EQ(token.length, each.length) << each.text;
        EXPECT_EQ(token.flag, each.flag) << each.text;
    }
    JsonToken token;
    EXPECT_NE(parseJsonValue("true", &token), nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(token.start), 1u);
    EXPECT_NE(parseJsonValue("falsehood", &token), nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(token.start), 0u);
}

TEST(JsonReader, TellsWhatIsWrongAndWhere) {
    const std::string deep(100000, '[');
    const struct {
        std::string text;
        JsonError error;
        std::int64_t place; // -1: nowhere
    } cases[] = {
        {"", JsonError::None, -1},
        {"nul", JsonError::None, -1},
        {"\"ab", JsonError::BadString, 3},
        {"\"a\nb\"", JsonError::BadString, 2},
        {"\"a\x7f\"", JsonError::BadString, 2},
        {"\"a\\", JsonError::BadString, 3},
        {"\"\\x\"", JsonError::BadEscape, 1},
        {"\"\\u12g4\"", JsonError::BadEscape, 1},
        {"\"\\u12", JsonError::BadEscape, 1},
        {"{", JsonError::ObjectNotClosed, 1},
        {"{\"a\":1", JsonError::ObjectNotClosed, 6},
        {"[1, 2", JsonError::ArrayNotClosed, 5},
        {"{\"a\" 1}", JsonError::NoColon, 5},
        {"{\"a\":1 \"b\":2}", JsonError::UnexpectedCharacter, 7},
        {"[1 2]", JsonError::UnexpectedCharacter, 3},
        {"{\"a\":1, }", JsonError::TrailingComma, 8},
        {"[1,]", JsonError::TrailingComma, 3},
        {"[[1],[2}", JsonError::UnexpectedCharacter, 7},
        {deep, JsonError::ArrayNotClosed, 256},
    };
    for (const auto& each : cases) {
        JsonToken token;
        const char* const text = each.text.c_str();
        EXPECT_EQ(parseJsonValue(text, &token), nullptr);
        EXPECT_EQ(token.type, JsonType::Error);
        EXPECT_EQ(static_cast<JsonError>(token.length), each.error) << each.text.substr(0, 30);
        EXPECT_EQ(token.start == nullptr ? -1 : token.start - text, each.place) << each.text.substr(0, 30);
    }
}

TEST(JsonReader, FindsFieldsOfTheTopLevelOnly) {
    const struct {
        const char* text;
        const char* key;
        const char* value; // how the text goes on there
    } cases[] = {
        {"{\"x\":{\"file\":1},\"file\": 2}", "file", "2}"},
        {" { \"a\" : 1 , \"a\":2}", "a", "1 , \"a\":2}"},
        {"{\"\\u0061b\\n\":1}", "ab\n", "1}"},
        {"{\"ab\":1,\"a\":2}", "a", "2}"},
        {"{\"a\":1,\"ab\":2}", "ab", "2}"},
        {"{\"a\":1}", "b", nullptr},
        {"{\"a\":1,}", "b", nullptr},
        {"{\"a\":x,\"b\":1}", "b", nullptr},
        {"{\"a\" 1,\"b\":1}", "b", nullptr},
        {"[\"a\"]", "a", nullptr},
        {"{}", "", nullptr},
    };
    for (const auto& each : cases) {
        const char* const found = findField(each.text, each.key);
        EXPECT_EQ(std::string(found == nullptr ? "(null)" : found),
                  each.value == nullptr ? "(null)" : each.value)
            << each.text;
    }
}

TEST(JsonReader, DecodesEscapes) {
    const struct {
        std::string body;
        const char* text;
        bool whole;
    } cases[] = {
        {"\\\"\\/\\\\\\b\\f\\n\\r\\t", "\"/\\\b\f\n\r\t", true},
        {"\\u00e9\\u00E9\\u20ac", "\xC3\xA9\xC3\xA9\xE2\x82\xAC", true},
        {"\\ud83d\\ude00", "\xF0\x9F\x98\x80", true},
        {"a\\ud83dx", "a", false},
        {"a\\ud83d\\n", "a", false},
        {"a\\ud83d", "a", false},
        {"a\\u00", "a", false},
        {"a\\u0000b", "a", false},
        {std::string("a\0b", 3), "a", false},
        {"a\\", "a", false},
        {"a\\x", "a", false},
    };
    for (const auto& each : cases) {
        std::vector<char> destination(each.body.size() + 1, 'x');
        const char* const end = unescapeJsonString(
            each.body.data(), static_cast<std::int64_t>(each.body.size()), destination.data());
        EXPECT_STREQ(destination.data(), each.text) << each.body;
        EXPECT_EQ(end, each.whole ? destination.data() + std::strlen(each.text) : nullptr) << each.body;
    }
}

TEST(JsonReader, ReadsNumbersInEveryLocale) {
    const struct {
        const char* text;
        std::int32_t value;
    } cases[] = {{"47", 47},
                 {"010", 8},
                 {"47.9", 47},
                 {"1e5", 100000},
                 {"-47.9", -47},
                 {"2.5e3", 2500},
                 {"1e99", INT32_MIN},
                 {"-2147483648.5", INT32_MIN},
                 {"2147483647.5", 2147483647},
                 {"-3", -3}};
    for (const char* const locale : {"C", "German", "de_DE.UTF-8"}) {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        for (const auto& each : cases) {
            JsonToken token;
            std::int32_t value = 1;
            parseJsonValue(each.text, &token);
            EXPECT_TRUE(jsonNumberToInt(token, &value)) << each.text;
            EXPECT_EQ(value, each.value) << each.text << " in " << locale;
        }
    }
    std::setlocale(LC_NUMERIC, "C");
    std::int32_t value = 0;
    EXPECT_TRUE(jsonNumberToInt({JsonType::Number, "0x10", 4, 0}, &value));
    EXPECT_EQ(value, 16);
    EXPECT_FALSE(jsonNumberToInt({JsonType::Number, "-", 1, 0}, &value));
}

TEST(JsonReader, WritesAPointAsTheLocaleDoes) {
    const std::string digits(62, '0');
    const struct {
        std::string text;
        std::string local; // in a locale with a comma
    } cases[] = {
        {"47.9", "47,9"}, {"-1.5e+3", "-1,5e+3"}, {"1e5", "1e5"}, {"1" + digits + "0.5e1", "1" + digits}};
    for (const auto& each : cases) {
        const std::string document = each.text + ",\"file\":\"a.cpp\"";
        JsonToken token;
        parseJsonValue(document.c_str(), &token);
        NumberText room;
        std::memset(room, 'x', sizeof room);
        EXPECT_EQ(localNumberText(token, "1.5", room), document.c_str());
        EXPECT_STREQ(localNumberText(token, "1,5", room), each.local.c_str());
    }
}

} // namespace vyerr
