// Host build only: calls of the system and allocations made to fail while a document is read, changed,
// searched and written. Nothing is lost, and what is reported is true.
#include "ini/IniEdit.h"
#include "ini/IniSave.h"
#include "support/AllocationFault.h"
#include "support/IniTestKit.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <vector>
#include <winhost/faults.h>

namespace {

using namespace vykeltest;
using winhost::Call;
using winhost::ScopedFault;

const std::string longKey(100000, 'k'); // longer than any buffer between here and the file
const std::string longText = "[a]\n" + longKey + "=v\nl=w\n";
const std::string savedText = "[a]\r\n" + longKey + "=v\r\nl=w\r\n\r\n";

/// A call, and the results when the first, second, ... of its kind fails; the last one holds for all that
/// follow.
struct Row {
    Call call;
    std::vector<int> results;
    int writeFlags = IniSafeSave | IniFlushToDisk;
};

/// Lets each of these calls of `run` fail once and hands its result to `check`.
template <class Run, class Check>
void failEach(const Row& row, Run run, Check check) {
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE(testing::Message() << "call " << static_cast<int>(row.call) << ", number " << nth);
        IniFolder folder;
        IniDocument document;
        ASSERT_EQ(folder.load(document, longText), 0);
        const ScopedFault flush({Call::FlushFileBuffers, 1}); // a save ignores that it fails
        const ScopedFault fault({row.call, nth});
        const int result = run(folder, document);
        if (fault.struck() == 0) {
            EXPECT_GT(nth, row.results.size());
            break;
        }
        EXPECT_EQ(result, row.results[std::min(nth, row.results.size()) - 1]);
        check(folder, document, result, flush.struck() != 0);
    }
}

TEST(IniFault, ALoadReportsWhatFails) {
    for (const Row& row : {Row{Call::fopen, {IniOpenFailed}}, Row{Call::fseek, {IniSeekFailed}},
                           Row{Call::fread, {IniReadFailed}}})
        failEach(
            row,
            [](const IniFolder& folder, IniDocument& document) {
                fs::rename(folder.file(), folder.path("other.ini"));
                return loadIniFile(&document, folder.path("other.ini").string().c_str());
            },
            [](const IniFolder& folder, const IniDocument& document, int, bool) {
                EXPECT_EQ(document.path.get(), folder.file().string());
            });
}

TEST(IniFault, ASaveThatFailsKeepsTheTarget) {
    for (const Row& row :
         {Row{Call::fopen, {IniTargetRefused, IniCreateFailed}}, Row{Call::fwrite, {IniWriteFailed}},
          Row{Call::fflush, {IniWriteFailed, 0}}, // the second has nothing to write
          Row{Call::fclose, {IniTargetRefused, IniWriteFailed}}, Row{Call::MoveFileExA, {IniTargetRefused}},
          Row{Call::fwrite, {IniWriteFailed}, 0}, Row{Call::fflush, {IniWriteFailed}, 0},
          Row{Call::fclose, {IniWriteFailed}, 0}})
        failEach(
            row,
            [&](const IniFolder& folder, IniDocument& document) {
                document.writeFlags = row.writeFlags;
                document.maxLineLength = -1;
                return saveIniFile(&document, folder.file().string().c_str());
            },
            [&](const IniFolder& folder, const IniDocument&, int result, bool flushed) {
                const std::string kept =
                    row.writeFlags != 0 ? longText : ""; // in place there is nothing left
                EXPECT_TRUE(readFile(folder.file()) == (result == 0 ? savedText : kept));
                EXPECT_FALSE(fs::exists(folder.path("vykel.TMP")));
                EXPECT_TRUE(row.call != Call::MoveFileExA || flushed) << "flushed before the replace";
            });
}

TEST(IniFault, WithoutMemorySearchesFindAndChangesLeaveTheDocument) {
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "[s" + std::to_string(i) + "]\nk=v\n";
    IniFolder folder;
    for (std::size_t nth = 1, struck = 1; struck != 0; ++nth) {
        IniDocument document;
        ASSERT_EQ(folder.load(document, text), 0);
        const std::string before = describe(document);
        document.sections.dropIndex();
        armAllocationFault({nth, false, 0});
        const IniSection* found = findIniSection(&document, "s7");
        const int result = setIniValue(&document, "new", "k", "v", 0);
        struck = armAllocationFault({}).struck;
        EXPECT_STREQ(found != nullptr ? found->name : "", "s7");
        if (result != 1) {
            EXPECT_EQ(result, IniMemoryFull);
            EXPECT_EQ(document.currentSection, nullptr);
            EXPECT_EQ(describe(document), before);
        }
    }
}

} // namespace
