// The bytes that are written, and what saving does to other files.
#include "ini/IniWriter.h"
#include "ini/IniEdit.h"
#include "support/IniTestKit.h"
#include "vybase/owners.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace {

using namespace vykeltest;

int save(IniDocument& document, const fs::path& path) {
    return saveIniFile(&document, path.string().c_str());
}

TEST(IniWriter, WritesAsTheOptionsSay) {
    const std::string v20(20, 'v');
    const struct {
        const char* reason;
        std::string before;
        std::string after;
        int writeFlags = 0;
        int maxLineLength = -1;
        char splitChar = '\0';
        int result = 0;
        std::string made = ""; ///< a letter for each section that the file does not have
    } rows[] = {
        {"lines, quotes, an empty line after each section", "[General]\nMajorVersion = 15\nq=\" x \"\n[e]\n",
         "[General]\r\nMajorVersion=15\r\nq=\" x \"\r\n\r\n[e]\r\n\r\n"},
        {"blanks around the separator", "[a]\nk=v\n", "[a]\r\nk = v\r\n\r\n", IniSpacedEquals},
        {"byte-order mark", "[a]\n", "\xEF\xBB\xBF[a]\r\n\r\n", IniWriteBom},
        {"sections of the file only", "[a]\nk=v\n[b]\n", "[a]\r\nk=v\r\n[b]\r\n", IniBlankLineRules},
        {"and around those made in memory", "[a]\n",
         "[a]\r\n\r\n[b]\r\nk=1\r\n2\r\n\r\n[c]\r\nk=1\r\n2\r\n\r\n", IniBlankLineRules, -1, '\0', 0, "bc"},
        {"entries before the first header", "x=1\n[a]\n", "x=1\r\n\r\n[a]\r\n\r\n"},
        {"the same without blank lines", "x=1\n[a]\n", "x=1\r\n[a]\r\n", IniBlankLineRules},
        {"as long as the limit: whole", "[a]\nkey=" + v20, "[a]\r\nkey=" + v20 + "\r\n\r\n", 0, 24},
        {"longer: split", "[a]\nkey=" + v20,
         "[a]\r\nkey Line0001=vvvvvvvv\r\nkey Line0002=vvvvvvvv\r\nkey Line0003=vvvv\r\n\r\n", 0, 23},
        {"the quotes count, and are around every piece", "[a]\nkey=\"" + v20 + "\"",
         "[a]\r\nkey Line0001 = \"vvvvvvvvvv\"\r\nkey Line0002 = \"vvvvvvvvvv\"\r\n\r\n", IniSpacedEquals,
         27},
        {"split after the last splitChar of a piece, where there is one", "[a]\nk=aa;b;cccccccccccc;d",
         "[a]\r\nk Line0001=aa;b;\r\nk Line0002=ccccccc\r\nk Line0003=ccccc;d\r\n\r\n", 0, 20, ';'},
        {"no room for a piece", "[a]\n" + std::string(11, 'k') + "=" + v20, "", 0, 23, '\0', IniKeyTooLong},
    };
    IniFolder folder;
    const fs::path target = folder.path("out.ini");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.reason);
        IniDocument document;
        document.parseFlags |= IniColonSeparator;
        ASSERT_EQ(folder.load(document, row.before), 0);
        for (const char name : row.made)
            EXPECT_EQ(setIniValue(&document, std::string(1, name).c_str(), "k", "1\n2", 0), 1);
        document.writeFlags = row.writeFlags;
        document.maxLineLength = row.maxLineLength;
        document.splitChar = row.splitChar;
        EXPECT_EQ(save(document, target), row.result);
        EXPECT_EQ(fs::exists(target), row.result == 0);
        EXPECT_EQ(readFile(target), row.after);
    }
}

TEST(IniWriter, SplitValuesReadBackTheSame) {
    std::string value(25000, ' ');
    std::generate(value.begin(), value.end(),
                  [n = 0]() mutable { return static_cast<char>('a' + n++ % 26); });
    IniFolder folder;
    for (const int limit : {18, 19, 25, 80, 4000}) {
        IniDocument document;
        ASSERT_EQ(setIniValue(&document, "a", "alias", value.c_str(), 0), 1);
        document.maxLineLength = limit;
        document.splitChar = limit % 2 != 0 ? 'e' : '\0';
        ASSERT_EQ(save(document, folder.file()), 0);
        std::istringstream lines(readFile(folder.file()));
        const auto longest = static_cast<std::size_t>(limit + (limit == 18 ? 2 : 1)); // with its CR
        for (std::string line; std::getline(lines, line);)
            ASSERT_LE(line.size(), longest);
        ASSERT_EQ(loadIniFile(&document, document.path.get()), 0);
        EXPECT_EQ(describe(document), "[a]1{alias=" + value + "@2;}") << limit;
    }
}

TEST(IniSave, NamesTemporaryFiles) {
    const char* const rows[][3] = {{"C:\\dir\\vykel.ini", "C:\\dir\\vykel.TMP", "C:\\dir\\ini$$7.TMP"},
                                   {"C:\\d.r/vykel", "C:\\d.r/vykel.TMP", "C:\\d.r/ini$$7.TMP"},
                                   {"vykel.ini", "vykel.ini.TMP", "ini$$7.TMP"},
                                   {"C:vykel.ini", "C:vykel.ini.TMP", "C:ini$$7.TMP"},
                                   {"C:\\dir\\x.TMP", "C:\\dir\\x.TMP.TMP", "C:\\dir\\ini$$7.TMP"},
                                   {"C:\\dir\\x.tmp", "C:\\dir\\x.TMP", "C:\\dir\\ini$$7.TMP"},
                                   {"/x.y.", "/x.y.TMP", "/ini$$7.TMP"},
                                   {"", ".TMP", "ini$$7.TMP"}};
    for (const auto& [target, byExtension, byPattern] : rows) {
        EXPECT_STREQ(nameTempByExtension(target).get(), byExtension);
        EXPECT_STREQ(nameTempByPattern(target, 7).get(), byPattern);
    }
}

TEST(IniSave, ReplacesTheTargetOrLeavesEverything) {
    constexpr int byExtension = IniSafeSave | IniFlushToDisk;
    constexpr int byPattern = IniSafeSave | IniTempByPattern;
    const struct {
        int writeFlags, result;
        const char* inTheWay = ""; ///< a folder of that name is made
    } rows[] = {{0, 0},
                {byExtension, 0},
                {byPattern, 0},
                {byPattern, 0, "ini$$0.TMP"},
                {byExtension, IniTargetRefused, "x.ini"},
                {0, IniCreateFailed, "x.ini"},
                {byExtension, IniCreateFailed, "x.TMP"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.writeFlags << ", in the way: " << row.inTheWay);
        IniFolder folder;
        const fs::path target = folder.path("t") / "x.ini";
        fs::create_directories(folder.path("t") / row.inTheWay);
        writeFile(target, "old");
        const auto countFiles = [&] { return std::distance(fs::directory_iterator(folder.path("t")), {}); };
        const auto files = countFiles();
        IniDocument document;
        ASSERT_EQ(setIniValue(&document, "a", "k", "v", 0), 1);
        document.writeFlags = row.writeFlags;
        EXPECT_EQ(save(document, target), row.result);
        EXPECT_EQ(countFiles(), files);
        EXPECT_TRUE(fs::is_directory(target) ||
                    readFile(target) == (row.result == 0 ? "[a]\r\nk=v\r\n\r\n" : "old"));
        EXPECT_EQ(document.path != nullptr && document.path.get() == target.string(), row.result == 0);
        EXPECT_EQ(document.lastWriteTime.dwHighDateTime != 0, row.result == 0);
    }
}

TEST(IniSave, LeavesAFileThatALeftoverLinksTo) {
    IniFolder folder;
    const fs::path other = folder.path("other");
    writeFile(other, "kept");
    for (const bool isSymbolic : {false, true}) {
        std::error_code unsupported; // on Windows
        if (isSymbolic)
            fs::create_symlink(other, folder.path("vykel.TMP"), unsupported);
        else
            fs::create_hard_link(other, folder.path("vykel.TMP"));
        IniDocument document;
        document.writeFlags = IniSafeSave;
        EXPECT_EQ(save(document, folder.file()), 0);
        EXPECT_EQ(readFile(other), "kept");
    }
}

TEST(IniSave, FailsWithoutAFolderAndWithoutAName) {
    IniFolder folder;
    IniDocument document;
    const fs::path target = folder.path("none") / "x.ini";
    EXPECT_EQ(save(document, target), IniTargetRefused);
    document.writeFlags = 0;
    EXPECT_EQ(save(document, target), IniCreateFailed);
    EXPECT_EQ(saveIniFile(&document, ""), IniNoFile);
    EXPECT_EQ(saveIniFile(&document, nullptr), IniNoFile);

    document.writeFlags = IniSafeSave | IniTempByPattern;
    for (int n = 0; n < 1000; ++n)
        writeFile(folder.path(("ini$$" + std::to_string(n) + ".TMP").c_str()), "");
    EXPECT_EQ(save(document, folder.file()), IniTempNamesTaken);
    EXPECT_FALSE(fs::exists(folder.file()));
    fs::remove(folder.path("ini$$999.TMP"));
    EXPECT_EQ(save(document, folder.file()), 0);
    // Of a key that is too long and a write that fails, the failure is reported.
    ASSERT_EQ(setIniValue(&document, "a", std::string(80, 'k').c_str(), "v", 0), 1);
    const vybase::FileStream readOnly(std::fopen(folder.file().string().c_str(), "rb"));
    EXPECT_EQ(writeIni(&document, readOnly.get()), IniWriteFailed);
}

} // namespace
