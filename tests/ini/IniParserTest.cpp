// Loading; the fuzz target ini replays every corner of the format.
#include "ini/IniReader.h"
#include "support/IniTestKit.h"
#include "vybase/owners.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

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

TEST(IniLoad, AFailureKeepsWhatIsLoaded) {
    IniFolder folder;
    IniDocument document;
    ASSERT_EQ(folder.load(document, "bad\n[old]"), 0);
    EXPECT_NE(document.lastWriteTime.dwHighDateTime, 0U);
    fs::create_directory(folder.path("folder"));
    const std::pair<const char*, int> rows[] = {
        {"none.ini", IniNoFile}, {"folder", IniOpenFailed}, {"vykel.ini", IniWideText}};
    writeFile(folder.file(), "\xFE\xFF");
    for (const auto& [name, result] : rows)
        EXPECT_EQ(loadIniFile(&document, folder.path(name).string().c_str()), result);
    EXPECT_EQ(loadIniFile(&document, nullptr), IniNoFile);
    EXPECT_EQ(describe(document) + document.path.get(), "[old]2{}" + folder.file().string());
    EXPECT_EQ(document.firstBadLine, 1);
    writeFile(folder.file(), "[a]");
    EXPECT_EQ(loadIniFile(&document, document.path.get()), 0) << "its own path";
    EXPECT_EQ(describe(document) + document.path.get(), "[a]1{}" + folder.file().string());
}

} // namespace
