#include "errors/JsonReader.h"

#include "errors/JsonEscape.h"
#include "errors/JsonNumber.h"
#include <clocale>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace vyerr;

/// A token as text: its type, where it starts (a boolean: its value), its length or error and its flag; then
/// where the value ends. A pointer that is only a number has an equals sign.
std::string describe(const std::string& text) {
    constexpr const char* types[] = {"error ",  "null ",  "boolean ", "number ",
                                     "string ", "array ", "object "};
    const auto place = [&text](const char* at) {
        const auto number = reinterpret_cast<std::uintptr_t>(at);
        return number < 2 ? '=' + std::to_string(number) : std::to_string(at - text.c_str());
    };
    JsonToken token;
    const char* const end = parseJsonValue(text.c_str(), &token);
    return types[static_cast<int>(token.type)] + place(token.start) + ' ' + std::to_string(token.length) +
           ' ' + std::to_string(token.flag) + ' ' + place(end);
}

TEST(JsonReader, DescribesValues) {
    const std::pair<const char*, const char*> cases[] = {
        {"null", "null 0 4 0 4"},        {"true", "boolean =1 4 0 4"},      {"falsehood", "boolean =0 5 0 5"},
        {"\"\"", "string 1 0 0 2"},      {"-", "number 0 1 0 1"},           {"007,", "number 0 3 0 3"},
        {"1.", "number 0 2 1 2"},        {"1.5e+3]", "number 0 6 1 6"},     {"1e", "number 0 1 0 1"},
        {"[[],[[]]]", "array 0 9 0 9"},  {"nul", "error =0 0 0 =0"},        {"\"ab", "error 3 2 0 =0"},
        {"\"a\nb\"", "error 2 2 0 =0"},  {"\"a\x7f\"", "error 2 2 0 =0"},   {"\"a\\", "error 3 2 0 =0"},
        {"\"\\x\"", "error 1 7 0 =0"},   {"\"\\u12g4\"", "error 1 7 0 =0"}, {"\"\\u12", "error 1 7 0 =0"},
        {"{", "error 1 3 0 =0"},         {"{\"a\":1", "error 6 3 0 =0"},    {"[1, 2", "error 5 4 0 =0"},
        {"{\"a\" 1}", "error 5 5 0 =0"}, {"[1 \"b\"", "error 3 6 0 =0"},    {"[1, ]", "error 4 8 0 =0"},
        {"[[1],[2}", "error 7 6 0 =0"}};
    for (const auto& [text, description] : cases)
        EXPECT_EQ(describe(text), description) << text;
    EXPECT_EQ(describe("\"a\\\"\\u00e9\"x"), "string 1 9 0 11");
    EXPECT_EQ(describe("{ \"a\" :\t1 ,\r\n\"b\":[ true , {} ] } "), "object 0 32 0 32");
    EXPECT_EQ(describe(std::string(100000, '[')), "error 256 4 0 =0");
}

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
    EXPECT_EQ(decode("\\u00e9\\u00FF\\u20af"), "\xC3\xA9\xC3\xBF\xE2\x82\xAF");
    EXPECT_EQ(decode("\\ud800\\udc00\\ud83d\\ude00"), "\xF0\x90\x80\x80\xF0\x9F\x98\x80");
    EXPECT_EQ(decode(std::string("a\0b", 3)), "a|");
    for (const char* const bad : {"\\u0000b", "\\", "\\x", "\\u00f", "\\ud83d", "\\ud83dx", "\\ud83d\\n",
                                  "\\udc00x", "\\udfff\\udc00"})
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
