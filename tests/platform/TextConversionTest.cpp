#include "vysys/textConversion.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace vysys {

namespace {

using Units = std::vector<unsigned>;

Units toUtf16(const std::string& text) {
    const std::unique_ptr<char[]> exact(new char[text.size()]); // where a sanitizer sees a byte too many
    std::copy(text.begin(), text.end(), exact.get());
    vyerr::Status status;
    vyerr::initStatus(&status);
    Utf16String out;
    utf8ToUtf16(exact.get(), exact.get() + text.size(), out, status);
    EXPECT_EQ(status.code, 0);
    EXPECT_EQ(*out.end(), 0);
    return {out.begin(), out.end()};
}

std::string toUtf8(const Units& units) {
    const std::vector<WCHAR> exact(units.begin(), units.end());
    vyerr::Status status;
    vyerr::initStatus(&status);
    Utf8Vector out;
    utf16ToUtf8(exact.data(), exact.data() + exact.size(), out, status);
    EXPECT_EQ(status.code, 0);
    return {out.begin(), out.end()};
}

} // namespace

TEST(TextConversion, BothWays) {
    const struct {
        std::string utf8;
        Units utf16;
    } cases[] = {{"", {}},
                 {std::string("a\0b", 3), {'a', 0, 'b'}},
                 {"\x7F\xC2\x80", {0x7F, 0x80}},
                 {"\xC3\xA9", {0xE9}},
                 {"\xDF\xBF\xE0\xA0\x80", {0x7FF, 0x800}},
                 {"\xEF\xBF\xBF\xF0\x90\x80\x80", {0xFFFF, 0xD800, 0xDC00}},
                 {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
                 {"\xED\xB0\x80", {0xDC00}}};
    for (const auto& each : cases) {
        EXPECT_EQ(toUtf16(each.utf8), each.utf16);
        EXPECT_EQ(toUtf8(each.utf16), each.utf8);
    }
    EXPECT_EQ(toUtf16(std::string(1000, 'a')), Units(1000, 'a'));
}

TEST(TextConversion, NothingIsRefusedAndNothingReadPastTheEnd) {
    const struct {
        std::string utf8;
        Units utf16;
    } cases[] = {{"\xFF\x80\xBF", {0xFF, 0x80, 0xBF}},  {"a\xC3", {'a', 0xC3}}, {"\xE2\x82", {0xE2, 0x82}},
                 {"\xF0\x9F\x98", {0xF0, 0x9F, 0x98}},  {"\xC0\x80", {0}},      {"\xC3\x41", {0xC1}},
                 {"\xF7\xBF\xBF\xBF", {0xDFBF, 0xDFFF}}}; // beyond Unicode: each unit keeps its 16 bits
    for (const auto& each : cases)
        EXPECT_EQ(toUtf16(each.utf8), each.utf16) << each.utf8;
    EXPECT_EQ(toUtf8({'a', 0xD83D}), "a\xED\xA0\xBD");
    EXPECT_EQ(toUtf8({0xDE00, 0xD83D}), "\xED\xB8\x80\xED\xA0\xBD");
}

} // namespace vysys
