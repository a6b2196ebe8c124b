// Numbers in other locales; the fuzz target json replays the reading of every kind of text.
#include "errors/JsonReader.h"

#include <clocale>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace vyerr;

TEST(JsonReader, ReadsNumbersInEveryLocale) {
    for (const char* const locale : {"German", "de_DE.UTF-8", "C"}) {
        std::setlocale(LC_NUMERIC, locale); // where there is one
        JsonToken token;
        std::int32_t number = 0;
        parseJsonValue("-1234.5e1", &token);
        EXPECT_TRUE(jsonNumberToInt(token, &number) && number == -12345) << number << locale;
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
