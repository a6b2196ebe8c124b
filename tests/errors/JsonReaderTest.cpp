// Fields, escapes and numbers; the fuzz target json compares the reading of any text with a plain grammar.
#include "errors/JsonReader.h"

#include "errors/JsonString.h"
#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vyerr;

TEST(JsonReader, FindsFieldsOfTheTopLevelOnly) {
    /// How the text goes on at the value.
    const auto rest = [](const char* text, const char* key) {
        const char* const found = findField(text, key);
        return std::string(found == nullptr ? "nothing" : found);
    };
    EXPECT_EQ(rest("{\"x\":{\"file\":1},\"file\": 2}", "file"), "2}");
    EXPECT_EQ(rest(" { \"a\" : 1 , \"a\":2}", "a"), "1 , \"a\":2}");
    EXPECT_EQ(rest("{\"\\u0061b\\n\":1}", "ab\n"), "1}");
    EXPECT_EQ(rest("{\"\\u00e8\":1,\"\\u00e9\":2}", "\xC3\xA9"), "2}");
    EXPECT_EQ(rest("{\"ab\":1,\"a\":{}}", "a"), "{}}");
    EXPECT_EQ(rest("{\"a\":1,\"ab\":2}", "ab"), "2}");
    for (const char* const text : {"{\"a\":1}", "{\"a\":x,\"b\":1}", "{\"a\" 1,\"b\":1}", "[\"b\"]", "{}"})
        EXPECT_EQ(rest(text, "b"), "nothing") << text;
    for (const std::size_t depth : {256u, 257u}) {
        const std::string nested = std::string(depth, '[') + std::string(depth, ']');
        EXPECT_EQ(parseJsonValue(nested.c_str(), nullptr) != nullptr, depth == 256);
    }
}

TEST(JsonReader, DecodesEscapes) {
    const auto decode = [](const std::string& body) {
        const std::string longer = body + "f"; // a byte that must not be read
        std::vector<char> text(body.size() + 1, 'x');
        const char* const end =
            unescapeJsonString(longer.data(), static_cast<std::int64_t>(body.size()), text.data());
        EXPECT_EQ(end, end == nullptr ? nullptr : text.data() + std::strlen(text.data()));
        return text.data() + std::string(end == nullptr ? "|" : "");
    };
    EXPECT_EQ(decode("\\\"\\/\\\\\\b\\f\\n\\r\\t"), "\"/\\\b\f\n\r\t");
    EXPECT_EQ(decode("\\u007f\\u0080\\u00e9\\u00FF\\u20af"), "\x7F\xC2\x80\xC3\xA9\xC3\xBF\xE2\x82\xAF");
    EXPECT_EQ(decode("\\ud800\\udc00\\ud83d\\ude00"), "\xF0\x90\x80\x80\xF0\x9F\x98\x80");
    EXPECT_EQ(decode(std::string("a\0b", 3)), "a|");
    for (const char* const bad : {"\\u0000b", "\\", "\\x", "\\u00f", "\\ud83d", "\\ud83dx", "\\ud83d\\n",
                                  "\\udc00x", "\\udfff\\udc00", "\\ud83d\\udg00"})
        EXPECT_EQ(decode(std::string("a") + bad), "a|") << bad;
}

TEST(JsonReader, ReadsNumbersInEveryLocale) {
    for (const char* const locale : {"German", "de_DE.UTF-8", "C"}) {
        if (std::setlocale(LC_NUMERIC, locale) == nullptr)
            continue;
        std::string numbers;
        for (const char* const text :
             {"47", "010", "0x10", "47.9", "-47.9", "2.5e3", "1e99", "2147483647.5", "-2147483648.5", "-"}) {
            JsonToken token;
            std::int32_t number = 0;
            parseJsonValue(text, &token);
            numbers += (jsonNumberToInt(token, &number) ? std::to_string(number) : "none") + ' ';
        }
        EXPECT_EQ(numbers, "47 8 16 47 -47 2500 -2147483648 2147483647 -2147483648 none ") << locale;
    }
}

TEST(JsonReader, WritesAPointAsTheLocaleDoes) {
    const std::string sixtyThree = '1' + std::string(62, '0');
    const std::string cases[][2] = {
        {"47.9", "47,9"}, {"-1.5e+3", "-1,5e+3"}, {"1e5", "1e5"}, {sixtyThree + "0.5", sixtyThree}};
    for (const auto& [text, withComma] : cases) {
        const std::string document = text + ",\"file\":\"a.cpp\"";
        JsonToken token;
        parseJsonValue(document.c_str(), &token);
        NumberText room;
        EXPECT_EQ(localNumberText(token, "1.5", room), document.c_str());
        EXPECT_STREQ(localNumberText(token, "1,5", room), withComma.c_str());
    }
}

} // namespace
