// The sample plug-in as a library: its text file, and the numbers and aliases that it keeps there.
#include "support/Codes.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vykel/PluginEntryPoints.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>
#ifndef _WIN32
#include <winhost/faults.h>
#endif

namespace vykeltest {
namespace {

using namespace std::string_literals;
constexpr std::int32_t fileMissing = -64101;
constexpr std::int32_t fileMalformed = -64102;
constexpr std::int32_t fileNotUtf8 = -64104;

/// The sample plug-in as a library, with a devices file.
class SimulatedPlugin : public testing::Test {
protected:
    ~SimulatedPlugin() override { FreeLibrary(module); }

    ListPtr makeList() const {
        vykel::IDeviceList* list = nullptr;
        EXPECT_EQ(getInterface(0, &list), success);
        return ListPtr(list);
    }
    /// A new list of these devices.
    ListPtr makeList(const std::string& devices) const {
        writeFile(devicesFile, devices);
        ListPtr list = makeList();
        EXPECT_EQ(refresh(*list), success);
        return list;
    }
    vykel::IDevice& deviceAt(const ListPtr& list, std::uint32_t index) {
        return *list->getDevice(index, 0, &status);
    }

    Machine machine;
    vykel::StatusBlock status = vykel::makeStatusBlock(); ///< for all calls of a test
    const fs::path devicesFile = machine.folder() / "left.devices";
    const fs::path journal = machine.folder() / "left.devices.journal";
    const fs::path temporary = machine.folder() / "left.devices.tmp";
    const HMODULE module =
        LoadLibraryExW(machine.copyLibrary("simulated", "left").string<WCHAR>().c_str(), nullptr, 0);
    decltype(&vykel_getPluginInterface) const getInterface =
        Symbol{GetProcAddress(module, "vykel_getPluginInterface")};
};

/// A device in one line: tokens, version, sort key, number, alias.
std::string describe(vykel::IDevice& device) {
    const std::uint32_t number = device.getNumber();
    const char* const alias = device.getAlias();
    return device.getPersistentToken(1) + "|"s + device.getPersistentToken(2) + "|" +
           std::to_string(device.getVersion()) + "|" + std::to_string(device.getSortKey()) + "|" +
           (number == vykel::noDeviceNumber ? "-" : std::to_string(number)) + "|" +
           (alias == nullptr ? "none" : "'"s + alias + "'");
}

TEST_F(SimulatedPlugin, ReadsEveryField) {
    const ListPtr list =
        makeList("\xEF\xBB\xBF# comment\r\n\r\n"
                 "token=a\r\n"
                 "  alias=\"\"\ttoken=\"b \\\"c\\\" \\\\ # d\" number=0 version=2147483647 # e\r\n"
                 "token=\"\xC3\xBC\" token2=f sortKey=4294967295 number=4294967294 alias=\"1\\n2\"");
    ASSERT_EQ(list->getCount(), 3u);
    EXPECT_EQ(describe(deviceAt(list, 0)), "a|a|1|0|-|none");
    EXPECT_EQ(describe(deviceAt(list, 1)), "b \"c\" \\ # d|b \"c\" \\ # d|2147483647|0|0|''");
    EXPECT_EQ(describe(deviceAt(list, 2)), "\xC3\xBC|f|1|4294967295|4294967294|'1\n2'");
    EXPECT_EQ(getInterface(0, nullptr), invalidParameter);
    EXPECT_EQ(list->getDevice(3, 0, &status), nullptr);
    EXPECT_EQ(list->getDevice(0, 2, &status), nullptr);
    EXPECT_EQ(status.code, invalidParameter); // the first error stays
    EXPECT_NE(list->getDevice(0, 1, &status), nullptr);
    EXPECT_TRUE(fs::remove(journal)); // also while a list is open
}

TEST_F(SimulatedPlugin, NamesTheBadLineAndKeepsTheGoodDevices) {
    const ListPtr list = makeList("token=good\n");
    const fs::path aside = machine.folder() / "aside";
    fs::rename(devicesFile, aside);
    EXPECT_EQ(refresh(*list), fileMissing);
    fs::rename(aside, devicesFile); // the same file again
    EXPECT_TRUE(list->isStale());
    for (const std::string& bad : {"tokn=a"s, "token="s, "token=\"\""s, "version=1"s, "token=a token=b"s,
                                   "token=a x"s, "token=a\"b\""s, "token=\"a"s, "token=\"\\x\""s,
                                   "token=a number=4294967295"s, "token=a version=-1"s, "token=a sortKey=1x"s,
                                   "token=good"s, "token=\xFF"s, "token=a\0"s, "=a"s, "token=\"a\"b=1"s}) {
        writeFile(devicesFile, "token=good\n\n" + bad + "\ntoken=last number=1\n");
        status.code = 0;
        list->refresh(&status);
        EXPECT_EQ(status.code, fileMalformed) << bad;
        EXPECT_EQ(status.line, 3u) << bad;
        EXPECT_STREQ(status.file, "left.devices");
        EXPECT_EQ(list->getCount(), 1u);
    }
    for (const std::string& wide : {"\xFF\xFEt\0o\0"s, "\xFE\xFF\0t\0o"s, "t\0o\0"s}) {
        writeFile(devicesFile, wide);
        EXPECT_EQ(refresh(*list), fileNotUtf8);
    }
}

TEST_F(SimulatedPlugin, KeepsNumbersAndAliasesForEveryone) {
    {
        const ListPtr one = makeList("\xEF\xBB\xBF# mine\r\ntoken=a number=1 # old\r\ntoken=b alias=\"\"");
        const ListPtr other = makeList();
        ASSERT_EQ(refresh(*other), 0);
        deviceAt(one, 0).setNumber(12, &status);
        deviceAt(other, 1).setNumber(5, &status);
        for (const char* const alias : {"first", "\"\\\r\n"}) {
            deviceAt(other, 1).setAlias(alias, 1, 0, &status);
            EXPECT_STREQ(deviceAt(other, 1).getAlias(), alias);
        }
        EXPECT_EQ(status.code, 0);
        EXPECT_FALSE(one->isStale());
        EXPECT_EQ(deviceAt(other, 0).getNumber(), 12u); // although it has set something itself since
        EXPECT_EQ(describe(deviceAt(one, 1)), "b|b|1|0|5|'\"\\\r\n'");

        ASSERT_EQ(refresh(*other), 0); // folds the changes in
        EXPECT_EQ(readFile(devicesFile), "\xEF\xBB\xBF# mine\r\ntoken=a number=12 # old\r\n"
                                         "token=b alias=\"\\\"\\\\\\r\\n\" number=5");
        EXPECT_FALSE(other->isStale());
        for (const std::uint32_t number : {13u, 14u}) { // a journal of the same size each time
            deviceAt(other, 0).setNumber(number, &status);
            EXPECT_EQ(deviceAt(one, 0).getNumber(), number);
            ASSERT_EQ(refresh(*other), 0);
        }
        deviceAt(one, 0).setNumber(15, &status);
        deviceAt(one, 1).setNumber(6, &status);
        deviceAt(one, 0).setAlias("no", 1, 0, &status);
        EXPECT_EQ(status.code, invalidParameter) << "it takes no alias";
    }
    EXPECT_NE(readFile(devicesFile).find("number=15"), std::string::npos) << "release folds";
    EXPECT_FALSE(fs::exists(temporary));
}

TEST_F(SimulatedPlugin, FoldsWhatIsWholeIntoTheFileAsItIsNow) {
    const ListPtr list = makeList("token=aa\ntoken=b\ntoken=a\n");
    deviceAt(list, 0).setNumber(77, &status);
    fs::resize_file(journal, fs::file_size(journal) - 1); // as if the process had been killed
    deviceAt(list, 1).setNumber(2, &status);
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(readFile(devicesFile), "token=aa\ntoken=b number=2\ntoken=a\n");

    deviceAt(list, 0).setNumber(1, &status);
    deviceAt(list, 1).setNumber(3, &status);
    writeFile(devicesFile, "token=cc\ntoken=b number=2\ntoken=a\n"); // an edit that keeps the size
    fs::last_write_time(devicesFile, fs::last_write_time(devicesFile) + std::chrono::seconds(1));
    EXPECT_TRUE(list->isStale());
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(readFile(devicesFile), "token=cc\ntoken=b number=3\ntoken=a\n");
}

TEST_F(SimulatedPlugin, LosesNothingWhenManyWriteAndFoldAtOnce) {
    constexpr std::uint32_t writers = 4;
    constexpr std::uint32_t devices = 100;
    std::string before, after;
    for (std::uint32_t i = 0; i < devices; ++i) {
        before += "token=d" + std::to_string(i) + "\n";
        after += "token=d" + std::to_string(i) + " number=" + std::to_string(i) + "\n";
    }
    writeFile(devicesFile, before);
    std::vector<std::thread> threads;
    for (std::uint32_t writer = 0; writer < writers; ++writer)
        threads.emplace_back([this, writer] {
            vykel::StatusBlock result = vykel::makeStatusBlock();
            for (std::uint32_t i = writer; i < devices; i += writers) {
                const ListPtr list = makeList(); // its release folds
                list->refresh(&result);
                list->getDevice(i, 0, &result)->setNumber(i, &result);
            }
            EXPECT_EQ(result.code, 0);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(readFile(devicesFile), after);
}

#ifndef _WIN32

TEST_F(SimulatedPlugin, NeitherLosesNorHalfKeepsWhenACallFails) {
    std::size_t nth = 0;
    const std::ptrdiff_t resources = winhost::openResources();
    for (bool struck = true; struck;) {
        ++nth;
        status.code = success;
        {
            const ListPtr list = makeList("token=a alias=\"\"\ntoken=b\n");
            const winhost::ScopedFault fault({winhost::Call::Any, nth});
            deviceAt(list, 0).setAlias("A", 1, 0, &status);
            refresh(*list);
            struck = fault.struck() != 0;
            EXPECT_FALSE(fs::exists(temporary)) << nth;
        }
        const std::string alias = status.code < 0 ? "" : "A";
        EXPECT_EQ(refresh(*makeList()), 0);
        EXPECT_EQ(readFile(devicesFile), "token=a alias=\"" + alias + "\"\ntoken=b\n") << nth;
    }
    EXPECT_EQ(winhost::openResources(), resources);
    EXPECT_GT(nth, 20u);
}

TEST_F(SimulatedPlugin, KeepsTheJournalUntilTheFileIsSafe) {
    using winhost::Call;
    // The flush of the new file, the one of its rename, and what shows that an editor saved just now.
    for (const winhost::Fault& fault : {winhost::Fault{Call::FlushFileBuffers, 1},
                                        {Call::FlushFileBuffers, 2},
                                        {Call::GetFileAttributesExW, 2}}) {
        const ListPtr list = makeList("token=a alias=\"\"\n");
        const winhost::ScopedFault armed(fault);
        deviceAt(list, 0).setNumber(1, &status);
        EXPECT_EQ(refresh(*list) + status.code, success);
        EXPECT_EQ(armed.struck(), 1u);
        EXPECT_EQ(readFile(devicesFile), "token=a alias=\"\"\n");
    }
    const ListPtr one = makeList("token=a alias=\"\"\n"), other = makeList();
    EXPECT_EQ(refresh(*other), success);
    deviceAt(one, 0).setNumber(1, &status);
    EXPECT_EQ(deviceAt(other, 0).getNumber(), 1u);
    {
        const winhost::ScopedFault reading({Call::ReadFile, 2});
        EXPECT_EQ(deviceAt(other, 0).getNumber(), 1u);
        EXPECT_EQ(reading.struck(), 0u); // nothing is new
    }
    {
        const winhost::ScopedFault header({Call::WriteFile, 2});
        EXPECT_EQ(refresh(*one), success);
        EXPECT_EQ(header.struck(), 1u);
    }
    deviceAt(one, 0).setNumber(2, &status);
    EXPECT_EQ(deviceAt(other, 0).getNumber(), 2u); // though the journal was not emptied
    for (const Call needed : {Call::LockFileEx, Call::FlushFileBuffers}) {
        const winhost::ScopedFault fault({needed, 1});
        status.code = success;
        deviceAt(one, 0).setAlias("A", 1, 0, &status);
        EXPECT_LT(status.code, success);
    }
}

#endif

} // namespace
} // namespace vykeltest
