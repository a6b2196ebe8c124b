// Host build only: a load, a save and an edit of which one call fails. What they report is true, and what
// they leave is whole.
#include "ini/IniEdit.h"
#include "ini/IniWriter.h"
#include "support/Faults.h"
#include "support/IniTestKit.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>
#include <winhost/faults.h>

namespace {

using namespace vykeltest;
using namespace winhost;

TEST(IniFault, AFailureIsReportedAndKeepsTheFile) {
    constexpr int load = -1, inPlace = 0, safe = IniSafeSave;
    constexpr int pattern = IniSafeSave | IniTempByPattern | IniWriteBom;
    const std::string before = // with all that the options allow, and more than a stream buffers
        "x=1\n[a]\nl Line0001=1\nl Line0002=2\n" + std::string(100000, 'k') + "=v\n";
    const struct {
        int writeFlags; ///< of the save, or `load`
        Call call;
        std::vector<int> results; ///< when the first, second, ... call fails; the last holds for the others
        const char* name = "vykel.ini";
    } rows[] = {{load, Call::fopen, {IniOpenFailed}},
                {load, Call::fseek, {IniSeekFailed}},
                {load, Call::fread, {IniReadFailed}},
                {load, Call::malloc, {0, IniMemoryFull}}, // 0: a search failed
                {safe, Call::fopen, {IniTargetRefused, IniCreateFailed}},
                {safe, Call::fclose, {IniTargetRefused, IniWriteFailed}},
                {safe, Call::remove, {IniCreateFailed}}, // what is in the way of the temporary file
                {safe, Call::remove, {IniTargetRefused, IniCreateFailed}, "new.ini"}, // what the probe made
                {safe, Call::MoveFileExA, {IniTargetRefused}},
                {pattern, Call::CreateFileA, {IniTempFailed}},
                {pattern, Call::fopen, {IniTargetRefused, IniCreateFailed}},
                {pattern, Call::fwrite, {IniWriteFailed}},
                {pattern, Call::malloc, {IniMemoryFull, 0, IniMemoryFull, 0}},
                {inPlace, Call::malloc, {IniMemoryFull, IniMemoryFull, 0}},
                {inPlace, Call::fflush, {IniWriteFailed}},
                {inPlace, Call::fclose, {IniWriteFailed}}};
    for (const auto& row : rows) {
        for (std::size_t nth = 1, struck = 1; struck != 0; ++nth) {
            SCOPED_TRACE(testing::Message() << "row " << &row - rows << ", call " << nth);
            IniFolder folder;
            IniDocument document;
            ASSERT_EQ(folder.load(document, before), 0);
            const std::string path = folder.path(row.name).string();
            document.parseFlags |= IniColonSeparator;
            document.writeFlags = row.writeFlags;
            document.maxLineLength = -1;
            int result = 0;
            {
                const ScopedFault fault({row.call, nth});
                result = row.writeFlags == load ? loadIniFile(&document, path.c_str())
                                                : saveIniFile(&document, path.c_str());
                struck = fault.struck();
            }
            EXPECT_EQ(result, struck == 0 ? 0 : row.results[std::min(nth, row.results.size()) - 1]);
            EXPECT_TRUE(struck != 0 || nth > row.results.size());
            // In place nothing is left once the file is open.
            const bool loses =
                (row.writeFlags == inPlace && row.call != Call::malloc) || path != folder.file();
            EXPECT_TRUE(result == 0 || readFile(path) == (loses ? "" : before));
            EXPECT_FALSE(fs::exists(folder.path("vykel.TMP")) || fs::exists(folder.path("ini$$0.TMP")));
        }
    }
}

TEST(IniFault, WithoutMemoryThereIsNoHalfSection) {
    IniDocument document;
    ASSERT_EQ(setIniValue(&document, "a", "k", "v", 0), 1);
    for (std::size_t nth = 1; nth <= 3; ++nth) { // the copies of the value, the name and the key
        const ScopedFault fault({Call::malloc, nth});
        const int result = setIniValue(&document, "b", "k", "v", 0);
        EXPECT_TRUE(result == IniMemoryFull && document.currentSection == nullptr &&
                    document.sections.count() == 1)
            << nth;
    }
}

} // namespace
