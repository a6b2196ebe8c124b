// What saving does to files; the fuzz target ini replays the bytes that are written with every option.
#include "ini/IniWriter.h"
#include "ini/IniEdit.h"
#include "support/IniTestKit.h"
#include "vybase/owners.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

int save(IniDocument& document, const fs::path& path) {
    return saveIniFile(&document, path.string().c_str());
}

TEST(IniWriter, SplitsAValueOfMoreThan9999Pieces) {
    const std::string value(20000, 'v');
    IniFolder folder;
    IniDocument document;
    ASSERT_EQ(setIniValue(&document, "a", "alias", value.c_str(), 0), 1);
    document.maxLineLength = 19; // room for two bytes, for one after five digits
    ASSERT_EQ(save(document, folder.file()), 0);
    const std::string text = readFile(folder.file());
    EXPECT_EQ(text.substr(text.find("9999 ")),
              "9999 = vv\r\nalias Line10000 = v\r\nalias Line10001 = v\r\n\r\n");
    ASSERT_EQ(loadIniFile(&document, document.path.get()), 0);
    EXPECT_EQ(describe(document), "[a]1{alias=" + value + "@2;}");
}

TEST(IniSave, ReplacesTheTargetOrLeavesEverything) {
    constexpr int byExtension = IniSafeSave | IniFlushToDisk;
    constexpr int byPattern = IniSafeSave | IniTempByPattern;
    const struct {
        int writeFlags, result;
        const char* inTheWay = ""; ///< a folder of that name is made
        const char* target = "t/x.ini";
    } rows[] = {{0, 0},
                {byExtension, 0},
                {byPattern, 0},
                {byPattern, 0, "ini$$0.TMP"},
                {byExtension, IniTargetRefused, "x.ini"},
                {0, IniCreateFailed, "x.ini"},
                {byExtension, IniCreateFailed, "x.TMP"},
                {byExtension, IniTargetRefused, "", "none/x.ini"},
                {0, IniCreateFailed, "", "none/x.ini"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.writeFlags << ", in the way: " << row.inTheWay);
        IniFolder folder;
        const fs::path target = folder.path(row.target).make_preferred();
        fs::create_directories(folder.path("t") / row.inTheWay);
        writeFile(folder.path("t") / "x.ini", "old");
        const auto countFiles = [&] { return std::distance(fs::directory_iterator(folder.path("t")), {}); };
        const auto files = countFiles();
        const std::string before = fs::is_directory(target) ? "" : readFile(target);
        IniDocument document;
        ASSERT_EQ(setIniValue(&document, "a", "k", "v\nw", 0), 1);
        document.writeFlags = row.writeFlags;
        EXPECT_EQ(save(document, target), row.result);
        EXPECT_EQ(countFiles(), files);
        EXPECT_TRUE(fs::is_directory(target) ||
                    readFile(target) == (row.result == 0 ? "[a]\r\nk=v\r\nw\r\n\r\n" : before));
        EXPECT_EQ(document.path != nullptr && document.path.get() == target.string(), row.result == 0);
        EXPECT_EQ(document.lastWriteTime.dwHighDateTime != 0, row.result == 0);
    }
}

TEST(IniSave, LeavesAFileThatALeftoverLinksTo) {
    IniFolder folder;
    const fs::path other = folder.path("other");
    writeFile(other, "kept");
    fs::create_hard_link(other, folder.path("vykel.TMP"));
    IniDocument document;
    document.writeFlags = IniSafeSave;
    EXPECT_EQ(save(document, folder.file()), 0);
    EXPECT_EQ(readFile(other), "kept");
}

TEST(IniSave, FailsWithoutANameAndWithoutOneForItsTemporaryFile) {
    IniFolder folder;
    IniDocument document;
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
