// Lookups, edits and escapes; the fuzz target ini compares them with a plain model.
#include "ini/IniEdit.h"
#include "ini/IniText.h"
#include "support/IniTestKit.h"
#include <gtest/gtest.h>
#include <vector>

namespace {

using namespace vykeltest;

TEST(IniEdit, NamesCompareWithoutCaseAndOuterBlanks) {
    const struct {
        const char* left;
        const char* right;
        int folded, exact;
    } rows[] = {{"General", " gENERAL\t ", 0, 1},
                {"a b", "ab", -1, -1},
                {"a", "a b", -1, -1},
                {"a", "B", -1, 1},
                {"[", "a", 1, -1},
                {"", " \v\f\r\n", 0, -1},
                {"\xE4", "\xC4", 1, 1},
                {"\xFF", "a", 1, 1},
                {"a ", "a\t", 1, 1},
                {nullptr, "", -1, -1},
                {nullptr, nullptr, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.right != nullptr ? row.right : "null");
        EXPECT_EQ(compareIniNames(row.left, row.right, 0), row.folded);
        EXPECT_EQ(compareIniNames(row.right, row.left, 0), -row.folded);
        EXPECT_EQ(compareIniNames(row.left, row.right, 1), row.exact);
        EXPECT_TRUE(row.left == nullptr || equalIniNames(row.left, row.right, 0) == (row.folded == 0));
    }
}

TEST(IniEdit, ReadsUnsignedNumbers) {
    const std::pair<std::int64_t, std::vector<std::string>> rows[] = {
        {15, {"15 ", "+15", "\" 15 \"", "00000000000015"}},
        {UINT32_MAX, {"4294967295"}},
        {0, {"\" \"", "\"\""}},
        {IniNotANumber, {"4294967296", "9999999999", "-0", "+", "+ 7", "++7", "7 7", "7x"}}};
    IniFolder folder;
    IniDocument document;
    for (const auto& [expected, values] : rows) {
        for (const std::string& value : values) {
            SCOPED_TRACE(value);
            ASSERT_EQ(folder.load(document, "[a]\nk=" + value), 0);
            document.lastKeyLine = 0;
            std::uint32_t number = 77;
            EXPECT_EQ(getIniUInt(&document, " A", "K ", &number), expected > 0 ? 1 : expected);
            EXPECT_EQ(number, expected > 0 ? expected : 77);
            EXPECT_EQ(document.lastKeyLine, 2);
        }
    }
}

TEST(IniEdit, RefusesEmptyNamesOnly) {
    IniDocument document;
    EXPECT_EQ(setIniValue(&document, "b", " x ", nullptr, '"'), 1);
    EXPECT_EQ(describe(document), "[b]-1{x=\"\"@-1;}");
    for (const char* empty : {static_cast<const char*>(nullptr), "", " "}) {
        EXPECT_EQ(setIniValue(&document, empty, "k", "v", 0), IniEmptyName);
        EXPECT_EQ(setIniValue(&document, "a", empty, "v", 0), IniEmptyName);
    }
    EXPECT_EQ(findIniSection(&document, nullptr), nullptr);
    EXPECT_EQ(findIniEntry(nullptr, 0, "x"), nullptr);
    EXPECT_EQ(findIniEntry(document.currentSection, 0, nullptr), nullptr);
    EXPECT_EQ(deleteIniSection(&document, nullptr), 0);
    EXPECT_EQ(countIniEntries(nullptr), 0U);
}

TEST(IniEscape, EncodesAndDecodes) {
    const struct {
        const char* encoded;
        const char* decoded;
        bool bothWays = false;
    } rows[] = {{"plain text \xC3\xA4\xFF", "plain text \xC3\xA4\xFF", true},
                {"\\t\\n\\x0d\\\"\\\\\\x01\\x1f\\x7f'", "\t\n\r\"\\\x01\x1F\x7F'", true},
                {"\\xAf\\x4", "\xAFx4"},
                {"\\xg1\\x1g\\x", "xg1x1gx"},
                {"\\", ""},
                {"\\q\\X41ntx\"", "qX41ntx\""},
                {"\\x\\n", "x\n"}};
    IniString out;
    for (const auto convert : {encodeIniValue, decodeIniValue}) {
        EXPECT_EQ(convert(nullptr, out), 0);
        EXPECT_STREQ(out.get(), "");
    }
    for (const auto& row : rows) {
        EXPECT_EQ(decodeIniValue(row.encoded, out), 0);
        EXPECT_STREQ(out.get(), row.decoded);
        EXPECT_EQ(encodeIniValue(row.decoded, out), 0);
        EXPECT_TRUE(!row.bothWays || std::string(out.get()) == row.encoded) << row.encoded;
    }
}

} // namespace
