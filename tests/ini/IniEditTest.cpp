// Lookups, edits and escapes; IniModelTest.cpp holds them against a plain model.
#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "support/IniTestKit.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

TEST(IniEdit, NamesCompareWithoutCaseAndOuterBlanks) {
    const struct {
        const char* left;
        const char* right;
        int folded;
        int exact;
    } rows[] = {
        {"General", " gENERAL\t ", 0, 1},
        {"a b", "ab", -1, -1},
        {"a", "a b", -1, -1},
        {"a", "B", -1, 1},
        {"[", "a", 1, -1},
        {"", " \v\f\r\n", 0, -1},
        {"\xE4", "\xC4", 1, 1},
        {"\xFF", "a", 1, 1},
        {"a ", "a\t", 1, 1},
        {nullptr, "", -1, -1},
        {nullptr, nullptr, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << (row.left ? row.left : "null") << "|" << (row.right ? row.right : "null"));
        EXPECT_EQ(compareIniNames(row.left, row.right, 0), row.folded);
        EXPECT_EQ(compareIniNames(row.right, row.left, 0), -row.folded);
        EXPECT_EQ(compareIniNames(row.left, row.right, 1), row.exact);
        EXPECT_EQ(row.left != nullptr && equalIniNames(row.left, row.right, 0),
                  row.left != nullptr && row.folded == 0);
    }
}

TEST(IniEdit, ReadsUnsignedNumbers) {
    const struct {
        const char* value;
        int result;
        std::uint32_t number;
    } rows[] = {
        {"15 ", 1, 15},
        {"+7", 1, 7},
        {"\" 8 \"", 1, 8},
        {"4294967295", 1, 4294967295},
        {"00000000000009", 1, 9},
        {"\" \"", 0, 77},
        {"\"\"", 0, 77},
        {"4294967296", IniNotANumber, 77},
        {"9999999999", IniNotANumber, 77},
        {"-0", IniNotANumber, 77},
        {"+", IniNotANumber, 77},
        {"+ 7", IniNotANumber, 77},
        {"++7", IniNotANumber, 77},
        {"7 7", IniNotANumber, 77},
        {"7x", IniNotANumber, 77},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        IniFolder folder;
        const IniDocumentPtr document = makeDocument();
        ASSERT_EQ(folder.load(document.get(), std::string("[a]\nk=") + row.value), 0);
        std::uint32_t number = 77;
        EXPECT_EQ(getIniUInt(document.get(), " A", "K ", &number), row.result);
        EXPECT_EQ(number, row.number);
        EXPECT_EQ(document->lastKeyLine, 2);
        EXPECT_EQ(getIniUInt(document.get(), "a", "none", &number), 0);
        EXPECT_EQ(getIniUInt(document.get(), "none", "k", &number), 0);
    }
}

TEST(IniEdit, SetsInPlaceOrAtTheEnd) {
    IniFolder folder;
    const IniDocumentPtr document = makeDocument();
    ASSERT_EQ(folder.load(document.get(), "[a]\nk=\"1\"\nl=2\n"), 0);
    EXPECT_EQ(setIniValue(document.get(), "A ", " K", " new ", 0), 1);
    EXPECT_EQ(setIniValue(document.get(), " b ", " x ", nullptr, '"'), 1);
    EXPECT_EQ(document->currentSection->name, std::string("b"));
    document->mergeDuplicates = 0;
    EXPECT_EQ(setIniValue(document.get(), "a", "l", "3", '\''), 1);
    EXPECT_EQ(describe(*document), "[a]1{k=new@2;l=2@3;l='3'@-1;}[b]-1{x=\"\"@-1;}");
    for (const char* empty : {static_cast<const char*>(nullptr), "", " "}) {
        EXPECT_EQ(setIniValue(document.get(), empty, "k", "v", 0), IniEmptyName);
        EXPECT_EQ(setIniValue(document.get(), "a", empty, "v", 0), IniEmptyName);
    }
    EXPECT_EQ(findIniSection(document.get(), nullptr), nullptr);
    EXPECT_EQ(findIniEntry(nullptr, 0, "x"), nullptr);
    EXPECT_EQ(countIniEntries(nullptr), 0U);
}

TEST(IniEscape, EncodesAndDecodes) {
    const struct {
        std::string text;
        const char* encoded;
    } both[] = {{"", ""},
                {"plain text \xC3\xA4\xFF", "plain text \xC3\xA4\xFF"},
                {"\t\n\r\"\\", "\\t\\n\\x0d\\\"\\\\"},
                {"\x01\x1F\x7F'", "\\x01\\x1f\\x7f'"}};
    IniString out;
    for (const auto& row : both) {
        EXPECT_EQ(encodeIniValue(row.text.c_str(), out), 0);
        EXPECT_STREQ(out.get(), row.encoded);
        EXPECT_EQ(decodeIniValue(row.encoded, out), 0);
        EXPECT_EQ(out.get(), row.text);
    }
    const struct {
        const char* text;
        const char* decoded;
    } decodeOnly[] = {{"\\xAf\\x4", "\xAFx4"}, {"\\x", "x"},     {"\\xg1", "xg1"},
                      {"\\x1g", "x1g"},        {"\\", ""},       {"\\q\\X41", "qX41"},
                      {"ntx\"", "ntx\""},      {"\\\\n", "\\n"}, {"\\x\\n", "x\n"}};
    for (const auto& row : decodeOnly) {
        EXPECT_EQ(decodeIniValue(row.text, out), 0);
        EXPECT_STREQ(out.get(), row.decoded) << row.text;
    }
}

} // namespace
