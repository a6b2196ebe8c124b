// What is read from bytes.
#include "ini/IniReader.h"
#include "support/IniTestKit.h"
#include "vybase/owners.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

constexpr int strip = IniStripDoubleQuotes;

TEST(IniParser, ReadsEveryCornerOfTheFormat) {
    const struct {
        const char* reason;
        std::string text;
        const char* expected;
        int firstBadLine = -1;
        int parseFlags = strip;
        int mergeDuplicates = 1;
        int caseSensitive = 0;
        int lastKeyLine = -1;
    } rows[] = {
        {"nothing", "", ""},
        {"blanks around everything, and no end of the last line",
         " \t[ General ]rest=x\n\v Major Version \f=\t15 \nk=v", "[General]1{Major Version=15@2;k=v@3;}"},
        {"comments are dropped and are no bad lines", ";x\n[a]\n  ; k=v\nk=;v\n", "[a]2{k=;v@4;}"},
        {"unusable: blank, no bracket, no name, no separator, no key, no value",
         "[a]\n\n[b\n[]\n[ ]\nword\n=v\nk=\nk= \nz=1\n", "[a]1{z=1@10;}", 2},
        {"the first bracket ends a name, the first equals sign a key", "[a]b]\nk=v=w\n", "[a]1{k=v=w@2;}"},
        {"entries before the first section are dropped, silently", "k=v\n[a]\n", "[a]2{}"},
        {"bytes of 128 and above are text", "[\xC4\xA0]\n\xE4=\xF6\xA0\n", "[\xC4\xA0]1{\xE4=\xF6\xA0@2;}"},
        {"pairs are one end, equal ones are two", "[a]\r\nb=1\n\rc=2\r\rd=3\n\ne=4",
         "[a]1{b=1@2;c=2@3;d=3@5;e=4@7;}", 4},
        {"NUL ends a line, pairs too", "[a]\0b=1\0\nc=2\r\0d=3\0\0e=4"s, "[a]1{b=1@2;c=2@3;d=3@4;e=4@6;}", 5},
        {"a line end at the very start ends nothing, unless it is NUL", "\n[a]\nb=1", "[a]1{b=1@2;}"},
        {"the same with a pair", "\r\n[a]", "[a]2{}", 1},
        {"NUL first", "\0[a]"s, "[a]2{}", 1},
        {"quotes: taken off, kept when alone, unmatched or single",
         "[a]\nb=\"x\"\nc=\"\nd=\"x\ne='x'\nf=\"\"\ng=\" x \"\nh=\"\"x\"\"\n",
         "[a]1{b=\"x\"@2;c=\"@3;d=\"x@4;e='x'@5;f=\"\"@6;g=\" x \"@7;h=\"\"x\"\"@8;}"},
        {"single quotes where asked for", "[a]\nb='x'\nc=\"x\"\nd='x\"\ne='\"x\"'\n",
         "[a]1{b='x'@2;c=\"x\"@3;d='x\"@4;e='\"x\"'@5;}", -1, IniStripSingleQuotes},
        {"empty values where asked for", "[a]\nb=\nc=  \n=d\n", "[a]1{b=@2;c=@3;}", 4,
         strip | IniAllowEmptyValue},
        {"colons where asked for; a header of their section's name continues it",
         "x:1\n[a]\nb:c=d\ne:=f\ng=h:i\nj: = k\n[(NULL)]\ny=2\n",
         "[(null)]7{x=1@1;y=2@8;}[a]2{b=c=d@3;e=f@4;g=h:i@5;j== k@6;}", -1, strip | IniColonSeparator},
        {"duplicates merge: place of the first, line and value and quoting of the last",
         "[a]\nk=\"1\"\nm=2\n[b]\n[ A ]\nK = 3\n", "[a]5{k=3@6;m=2@3;}[b]4{}", -1, strip, 1, 0, 2},
        {"case-sensitive names differ", "[a]\nk=1\nK=2\n[A]\n", "[a]1{k=1@2;K=2@3;}[A]4{}", -1, strip, 1, 1},
        {"duplicates kept", "[a]\nk=1\nk=2\n[a]\nk=3\n", "[a]1{k=1@2;k=2@3;}[a]4{k=3@5;}", -1, strip, 0},
        {"continuation entries join, whatever their names and order; number 1 begins anew",
         "[a]\nb=0\nb Line0001=\"1\"\nc Line7=2\nd Line0=3\ne Line01=4\nf Line3=5\ng=6\n",
         "[a]1{b=0@2;b=\"123\"@3;e=45@6;g=6@8;}"},
        {"no continuation: not from 1, too large, no digits, more after them, another case",
         "[a]\nb Line2=1\nc Line1x=2\nd Line=3\ne Line4294967297=4\nf line1=5\ng Line1 Line1=6\nLine1=7\n",
         "[a]1{b Line2=1@2;c Line1x=2@3;d Line=3@4;e Line4294967297=4@5;f line1=5@6;g Line1 "
         "Line1=6@7;Line1=7@8;}"},
    };
    IniFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        IniDocument document;
        document.parseFlags = row.parseFlags;
        document.mergeDuplicates = row.mergeDuplicates;
        document.caseSensitive = row.caseSensitive;
        EXPECT_EQ(folder.load(document, row.text), 0);
        EXPECT_EQ(describe(document), row.expected);
        EXPECT_EQ(document.firstBadLine, row.firstBadLine);
        EXPECT_EQ(document.lastKeyLine, row.lastKeyLine);
    }
}

TEST(IniParser, KeepsNamesOfEqualHashesApart) {
    std::string text = "[a]\nN71KG=1\n";
    for (char key = 'b'; key < 'v'; ++key) // enough for an index
        text += key + "=v\n"s;
    IniFolder folder;
    IniDocument document;
    ASSERT_EQ(folder.load(document, text + "0F4GO=2\n"), 0);
    EXPECT_EQ(document.sections.first()->entries.count(), 22U);
}

/// The beginnings and ends of the blocks that are read fall everywhere around a line's end.
TEST(IniParser, ReadsLinesOfAnyLengthInBlocksOfAnySize) {
    for (const std::string& end : {"\r\n"s, "\n"s, "\n\0"s}) {
        for (std::size_t length = 32755; length < 32770; ++length) {
            const std::string key(length != 32755 ? length : 3000000, 'k');
            const std::string text = "[a]" + end + key + "=v" + end + end + "l=w";
            for (const std::size_t expectedSize : {std::size_t{0}, std::size_t{1}, text.size()}) {
                const vybase::FileStream file(std::tmpfile());
                std::fwrite(text.data(), 1, text.size(), file.get());
                std::rewind(file.get());
                IniDocument document;
                IniLineReader reader(file.get(), expectedSize);
                EXPECT_EQ(parseIni(&document, &reader), 0);
                ASSERT_TRUE(describe(document) == "[a]1{" + key + "=v@2;l=w@4;}") << key.size();
            }
        }
    }
}

TEST(IniLoad, ByteOrderMarksAndFailures) {
    const struct {
        const char* reason;
        std::string text;
        int result;
        const char* expected;
        int firstBadLine = 1;
    } rows[] = {
        {"UTF-8", "\xEF\xBB\xBF[a]", 0, "[a]1{}", -1},
        {"nothing after the mark", "\xEF\xBB\xBF", 0, "", -1},
        {"UTF-16 of two bytes", "\xFE\xFF", IniWideText, "[old]2{}"},
        {"three zeros are lines", "\0\0\xFE[a]\n[b]"s, 0, "[b]4{}"},
    };
    IniFolder folder;
    IniDocument document;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        ASSERT_EQ(folder.load(document, "bad\n[old]"), 0);
        EXPECT_EQ(folder.load(document, row.text), row.result);
        EXPECT_EQ(describe(document), row.expected);
        EXPECT_EQ(document.firstBadLine, row.firstBadLine);
    }
    EXPECT_EQ(document.path.get(), folder.file().string());
    EXPECT_NE(document.lastWriteTime.dwHighDateTime, 0U);
    EXPECT_EQ(loadIniFile(&document, document.path.get()), 0) << "its own path";
    EXPECT_EQ(loadIniFile(&document, folder.path("none.ini").string().c_str()), IniNoFile);
    EXPECT_EQ(loadIniFile(&document, nullptr), IniNoFile);
    fs::create_directory(folder.path("folder"));
    EXPECT_EQ(loadIniFile(&document, folder.path("folder").string().c_str()), IniOpenFailed);
    EXPECT_EQ(document.path.get(), folder.file().string());
}

} // namespace
