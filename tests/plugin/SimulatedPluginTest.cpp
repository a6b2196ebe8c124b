// The sample plug-in as a library: its text file, and what it keeps there for every process.
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vykel/PluginEntryPoints.h"
#include "vykel/StatusCodes.h"
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace vykeltest {
namespace {

using vykel::IDevice;
using vykel::StatusBlock;

constexpr std::int32_t fileMissing = -64101;
constexpr std::int32_t fileMalformed = -64102;

IDevice& deviceAt(const ListPtr& list, std::uint32_t index) {
    StatusBlock status = vykel::makeStatusBlock();
    return *list->getDevice(index, 0, &status);
}

/// A device in one line: tokens, version, sort key, number, alias.
std::string describe(IDevice& device) {
    std::string text = device.getPersistentToken(1) + std::string("|");
    text += device.getPersistentToken(2) + std::string("|") + std::to_string(device.getVersion()) + "|" +
            std::to_string(device.getSortKey()) + "|";
    const std::uint32_t number = device.getNumber();
    text += number == vykel::noDeviceNumber ? "-" : std::to_string(number);
    const char* const alias = device.getAlias();
    return text + "|" + (alias == nullptr ? "none" : "'" + std::string(alias) + "'");
}

class SimulatedPlugin : public testing::Test {
protected:
    ~SimulatedPlugin() override { FreeLibrary(module); }

    void reload() {
        FreeLibrary(module);
        module = LoadLibraryExW(path.c_str(), nullptr, 0);
    }
    ListPtr makeList() const {
        vykel::IDeviceList* list = nullptr;
        EXPECT_EQ(symbolOf<decltype(&vykel_getPluginInterface)>(module, "vykel_getPluginInterface")(0, &list),
                  0);
        return ListPtr(list);
    }
    /// A new list of these devices.
    ListPtr makeList(const std::string& devices) const {
        writeFile(devicesFile, devices);
        ListPtr list = makeList();
        EXPECT_EQ(refresh(*list), 0);
        return list;
    }

    Machine machine;
    const WideString path = machine.copyLibrary("simulated", "left").string<WCHAR>();
    const fs::path devicesFile = machine.folder() / "left.devices";
    HMODULE module = LoadLibraryExW(path.c_str(), nullptr, 0);
};

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
}

TEST_F(SimulatedPlugin, NamesTheBadLineAndKeepsTheGoodDevices) {
    const ListPtr list = makeList();
    EXPECT_EQ(refresh(*list), fileMissing);
    for (const char* const bad :
         {"tokn=a", "token=", "token=\"\"", "version=1", "token=a token=b", "token=a x", "token=a\"b\"",
          "token=\"a", "token=\"\\x\"", "token=a number=4294967295", "token=a version=-1",
          "token=a sortKey=1x", "token=good", "token=\xFF", "=a", "token=\"a\"b=1"}) {
        writeFile(devicesFile, "token=good\n");
        ASSERT_EQ(refresh(*list), 0);
        writeFile(devicesFile, "token=good\n\n" + std::string(bad) + "\ntoken=last number=1\n");
        StatusBlock status = vykel::makeStatusBlock();
        list->refresh(&status);
        EXPECT_EQ(status.code, fileMalformed) << bad;
        EXPECT_EQ(status.line, 3u) << bad;
        EXPECT_STREQ(status.file, "left.devices");
        EXPECT_TRUE(list->isStale());
        EXPECT_EQ(list->getCount(), 1u);
    }
}

TEST_F(SimulatedPlugin, KeepsNumbersAndAliasesForEveryone) {
    StatusBlock status = vykel::makeStatusBlock();
    {
        const ListPtr one = makeList("# mine\r\ntoken=a number=1 # old\r\ntoken=b alias=\"\"");
        const ListPtr other = makeList();
        ASSERT_EQ(refresh(*other), 0);
        deviceAt(one, 0).setNumber(12, &status);
        deviceAt(one, 1).setNumber(5, &status);
        deviceAt(one, 1).setAlias("say \"hi\"", 1, 0, &status);
        EXPECT_EQ(status.code, 0);
        EXPECT_FALSE(one->isStale());
        EXPECT_EQ(deviceAt(other, 0).getNumber(), 12u);
        EXPECT_EQ(describe(deviceAt(other, 1)), "b|b|1|0|5|'say \"hi\"'");

        ASSERT_EQ(refresh(*other), 0); // folds the journal
        EXPECT_EQ(readFile(devicesFile),
                  "# mine\r\ntoken=a number=12 # old\r\ntoken=b alias=\"say \\\"hi\\\"\" number=5");
        EXPECT_FALSE(other->isStale());
        deviceAt(other, 0).setNumber(13, &status);
        EXPECT_EQ(deviceAt(one, 0).getNumber(), 13u); // across a fold
        deviceAt(one, 0).setAlias("no", 1, 0, &status);
        EXPECT_EQ(status.code, vykel::toInteger(vykel::StatusCode::InvalidParameter)) << "it takes no alias";
    }
    reload();
    const ListPtr later = makeList();
    ASSERT_EQ(refresh(*later), 0);
    EXPECT_EQ(deviceAt(later, 0).getNumber(), 13u);
    EXPECT_FALSE(fs::exists(machine.folder() / "left.devices.tmp"));
}

TEST_F(SimulatedPlugin, IgnoresWhatAKilledProcessLeftHalfWritten) {
    const ListPtr list = makeList("token=a\ntoken=b\n");
    std::ofstream(machine.folder() / "left.devices.journal", std::ios::app | std::ios::binary)
        << "\nnumber=77 token=\"a";
    StatusBlock status = vykel::makeStatusBlock();
    deviceAt(list, 1).setNumber(2, &status);
    EXPECT_EQ(deviceAt(list, 0).getNumber(), vykel::noDeviceNumber);
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(readFile(devicesFile), "token=a\ntoken=b number=2\n");
}

TEST_F(SimulatedPlugin, LosesNothingWhenManyWriteAndFoldAtOnce) {
    constexpr std::uint32_t writers = 4;
    constexpr std::uint32_t each = 25;
    std::string text;
    for (std::uint32_t i = 0; i < writers * each; ++i)
        text += "token=d" + std::to_string(i) + "\n";
    writeFile(devicesFile, text);
    std::vector<std::thread> threads;
    for (std::uint32_t writer = 0; writer < writers; ++writer) {
        threads.emplace_back([this, writer] {
            StatusBlock status = vykel::makeStatusBlock();
            for (std::uint32_t i = writer * each; i < (writer + 1) * each; ++i) {
                const ListPtr list = makeList(); // released, and with it folded, each time
                list->refresh(&status);
                deviceAt(list, i).setNumber(i, &status);
            }
            EXPECT_EQ(status.code, 0);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const ListPtr list = makeList();
    ASSERT_EQ(refresh(*list), 0);
    for (std::uint32_t i = 0; i < writers * each; ++i)
        EXPECT_EQ(deviceAt(list, i).getNumber(), i);
}

} // namespace
} // namespace vykeltest
