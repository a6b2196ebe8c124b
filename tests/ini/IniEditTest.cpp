// Null; the fuzz target ini compares edits with a plain model, and replays names, numbers and escapes.
#include "ini/IniEdit.h"
#include "ini/IniText.h"
#include "support/IniTestKit.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

TEST(IniEdit, TakesEmptyAndNullTexts) {
    IniDocument document;
    EXPECT_EQ(setIniValue(&document, "b", " x ", nullptr, '"'), 1);
    EXPECT_EQ(describe(document), "[b]-1{x\"=@-1;}");
    for (const char* empty : {static_cast<const char*>(nullptr), "", " "}) {
        EXPECT_EQ(setIniValue(&document, empty, "k", "v", 0), IniEmptyName);
        EXPECT_EQ(setIniValue(&document, "a", empty, "v", 0), IniEmptyName);
    }
    EXPECT_EQ(findIniSection(&document, nullptr), nullptr);
    EXPECT_EQ(findIniEntry(nullptr, 0, "x"), nullptr);
    EXPECT_EQ(findIniEntry(document.currentSection, 0, nullptr), nullptr);
    EXPECT_EQ(deleteIniSection(&document, nullptr), 0);
    EXPECT_EQ(countIniEntries(nullptr), 0U);
    EXPECT_EQ(compareIniNames(nullptr, "", 0), -1);
    EXPECT_EQ(compareIniNames("", nullptr, 0), 1);
    EXPECT_EQ(compareIniNames(nullptr, nullptr, 0), 0);
    for (const auto convert : {encodeIniValue, decodeIniValue}) {
        IniString out;
        EXPECT_EQ(convert(nullptr, out), 0);
        EXPECT_STREQ(out.get(), "");
    }
}

} // namespace
