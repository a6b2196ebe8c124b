#include "vysys/textConversion.h"

#include "support/OwnedStatus.h"
#include <gtest/gtest.h>
#include <memory>
#include <vector>

namespace {

using namespace vysys;
using Units = std::vector<unsigned>;

Units toUtf16(const std::string& text) {
    const std::unique_ptr<char[]> exact(new char[text.size()]); // where a sanitizer sees a byte too many
    std::copy(text.begin(), text.end(), exact.get());
    vykeltest::OwnedStatus status;
    Utf16String out;
    utf8ToUtf16(exact.get(), exact.get() + text.size(), out, status);
    return {out.begin(), out.end()};
}

std::string toUtf8(const Units& units) {
    const std::vector<WCHAR> exact(units.begin(), units.end());
    vykeltest::OwnedStatus status;
    Utf8Vector out;
    utf16ToUtf8(exact.data(), exact.data() + exact.size(), out, status);
    return {out.begin(), out.end()};
}

TEST(TextConversion, ConvertsBothWays) {
    const std::string utf8 = std::string("a\0b", 3) + "\x7F\xC2\x80\xC3\xA9\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"
                                                      "\xF0\x90\x80\x80\xF0\x9F\x98\x80\xED\xB0\x80";
    const Units utf16 = {'a',   0,      'b',    0x7F,   0x80,   0xE9,   0x7FF,
                         0x800, 0xFFFF, 0xD800, 0xDC00, 0xD83D, 0xDE00, 0xDC00};
    EXPECT_EQ(toUtf16(utf8), utf16);
    EXPECT_EQ(toUtf8(utf16), utf8);
    EXPECT_EQ(toUtf16(std::string(1000, 'a')), Units(1000, 'a'));
}

TEST(TextConversion, RefusesNothingAndReadsNothingPastTheEnd) {
    EXPECT_EQ(toUtf16("\xFF\x80\xBF\xC0\x80\xC3\x41"), (Units{0xFF, 0x80, 0xBF, 0, 0xC1}));
    EXPECT_EQ(toUtf16("a\xC3"), (Units{'a', 0xC3}));
    EXPECT_EQ(toUtf16("\xE2\x82"), (Units{0xE2, 0x82}));
    EXPECT_EQ(toUtf16("\xF0\x9F\x98"), (Units{0xF0, 0x9F, 0x98}));
    EXPECT_EQ(toUtf16("\xF7\xBF\xBF\xBF"), (Units{0xDFBF, 0xDFFF})); // beyond Unicode: 16 bits each
    EXPECT_EQ(toUtf8({'a', 0xD83D}), "a\xED\xA0\xBD");
    EXPECT_EQ(toUtf8({0xDC00, 0xD83D}), "\xED\xB0\x80\xED\xA0\xBD");
}

TEST(StatusString, StaysTerminatedAndDoesNothingAfterAnError) {
    vykeltest::OwnedStatus status;
    Utf16String text;
    utf8ToUtf16("abc", text, status);
    EXPECT_TRUE(text.resize(1, status));
    EXPECT_EQ(text.c_str()[1], 0);
    status.code = -1;
    EXPECT_FALSE(text.resize(300, status));
    EXPECT_EQ(text.end() - text.begin(), 1);
}

} // namespace
