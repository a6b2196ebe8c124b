// Host build only: calls of the system and allocations made to fail while a document is read, changed,
// searched and written. Nothing is lost, and what is reported is true.
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

enum class How { Load, SafeSave, PatternSave, NewSave, SaveInPlace };
constexpr std::int32_t writeFlags[] = {0, IniSafeSave | IniFlushToDisk,
                                       IniSafeSave | IniTempByPattern | IniWriteBom, IniSafeSave, 0};

TEST(IniFault, AFailureIsReportedAndKeepsTheFile) {
    const std::string key(100000, 'k'); // longer than any buffer between here and the file
    const std::string before = "[a]\n" + key + "=v\nl=w\n";
    const std::string after = "[a]\r\n" + key + "=v\r\nl=w\r\n\r\n";
    const struct {
        How how;
        Call call;
        std::vector<int> results; ///< when the first, second, ... call fails; the last holds for the others
    } rows[] = {{How::Load, Call::fopen, {IniOpenFailed}},
                {How::Load, Call::fseek, {IniSeekFailed}},
                {How::Load, Call::fread, {IniReadFailed}},
                {How::SafeSave, Call::fopen, {IniTargetRefused, IniCreateFailed}},
                {How::SafeSave, Call::fwrite, {IniWriteFailed}},
                {How::SafeSave, Call::fflush, {IniWriteFailed, 0}}, // the second has nothing to write
                {How::SafeSave, Call::fclose, {IniTargetRefused, IniWriteFailed}},
                {How::SafeSave, Call::remove, {IniCreateFailed}}, // what is in the way of the temporary file
                {How::SafeSave, Call::MoveFileExA, {IniTargetRefused}},
                {How::PatternSave, Call::CreateFileA, {IniTempFailed}},
                {How::PatternSave, Call::fopen, {IniTargetRefused, IniCreateFailed}},
                {How::PatternSave, Call::fwrite, {IniWriteFailed}},
                {How::PatternSave, Call::malloc, {IniMemoryFull, 0, IniMemoryFull, 0}}, // 0: a search failed
                {How::NewSave, Call::remove, {IniTargetRefused, IniCreateFailed}},      // what the probe made
                {How::SaveInPlace, Call::malloc, {IniMemoryFull, IniMemoryFull, 0}},
                {How::SaveInPlace, Call::fwrite, {IniWriteFailed}},
                {How::SaveInPlace, Call::fflush, {IniWriteFailed}},
                {How::SaveInPlace, Call::fclose, {IniWriteFailed}}};
    for (const auto& row : rows) {
        for (std::size_t nth = 1, struck = 1; struck != 0; ++nth) {
            SCOPED_TRACE(testing::Message() << "row " << &row - rows << ", call " << nth);
            IniFolder folder;
            IniDocument document;
            ASSERT_EQ(folder.load(document, before), 0);
            writeFile(folder.path("other.ini"), before);
            document.writeFlags = writeFlags[static_cast<int>(row.how)];
            document.maxLineLength = -1;
            const std::string target = folder.file().string(), other = folder.path("other.ini").string();
            if (row.how == How::NewSave)
                fs::remove(target);
            const ScopedFault flush({Call::FlushFileBuffers, 1}); // a save ignores that it fails
            int result = 0;
            {
                const ScopedFault fault({row.call, nth});
                result = row.how == How::Load ? loadIniFile(&document, other.c_str())
                                              : saveIniFile(&document, target.c_str());
                struck = fault.struck();
            }
            if (struck == 0) {
                EXPECT_EQ(result, 0);
                EXPECT_GT(nth, row.results.size());
            } else {
                EXPECT_EQ(result, row.results[std::min(nth, row.results.size()) - 1]);
                EXPECT_EQ(document.path.get(), target);
                EXPECT_TRUE(row.call != Call::MoveFileExA || flush.struck() != 0) << "before the replace";
            }
            // In place nothing is left once the file is open.
            const bool keeps = row.how < How::NewSave || row.call == Call::malloc;
            const bool saves = result == 0 && row.how != How::Load;
            const std::string mark = (document.writeFlags & IniWriteBom) != 0 ? "\xEF\xBB\xBF" : "";
            EXPECT_TRUE(readFile(target) == (saves ? mark + after : keeps ? before : ""));
            EXPECT_FALSE(fs::exists(folder.path("vykel.TMP")) || fs::exists(folder.path("ini$$0.TMP")));
        }
    }
}

TEST(IniFault, NothingIsLostWhateverFails) {
    std::string text = "x=1\n[s]\nv Line0001=1\nv Line0002=2\n"; // with all that the options allow
    for (int i = 0; i < 20; ++i)                                 // enough for the indexes
        text += "k" + std::to_string(i) + "=v\n";
    for (int i = 0; i < 20; ++i)
        text += "[s" + std::to_string(i) + "]\nk=v\n";
    const IniFolder folder;
    const std::string path = folder.file().string();
    int result = 0;
    const auto run = [&] {
        IniDocument document;
        document.writeFlags = IniSafeSave | IniFlushToDisk;
        document.parseFlags |= IniColonSeparator;
        result = loadIniFile(&document, path.c_str());
        if (result != 0)
            return result;
        document.sections.dropIndex(); // without memory for another one a search walks
        EXPECT_NE(findIniSection(&document, "s7"), nullptr);
        const int added = setIniValue(&document, "s21", "k", "v", 0);
        EXPECT_EQ(document.sections.count(), added == 1 ? 23U : 22U);
        if (added != 1) {
            EXPECT_EQ(added, IniMemoryFull);
            EXPECT_EQ(document.currentSection, nullptr);
            return result = added;
        }
        if (setIniValue(&document, "s", "k7", "new", 0) != 1 || deleteIniEntry(&document, "s", "k19") != 1 ||
            deleteIniSection(&document, "s7") != 1)
            return result = IniMemoryFull;
        return result = saveIniFile(&document, path.c_str());
    };
    writeFile(folder.file(), text);
    EXPECT_EQ(run(), 0);
    const std::string after = readFile(folder.file());
    const std::ptrdiff_t resources = winhost::openResources();
    writeFile(folder.file(), text);
    withEachFault(10, 20, run, [&](const Fault&) {
        const std::string left = readFile(folder.file());
        EXPECT_TRUE(left == (result == 0 ? after : text)) << result << left;
        EXPECT_EQ(winhost::openResources(), resources);
        writeFile(folder.file(), text);
    });
}

} // namespace
