// The sample plug-in as a library: its text files, and the numbers and aliases that it keeps.
#include "support/Codes.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vykel/PluginEntryPoints.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <thread>
#include <vector>
#ifndef _WIN32
#include <winhost/faults.h>
using winhost::Call, winhost::ScopedFault;
#endif

namespace vykeltest {
namespace {
using namespace std::string_literals;
constexpr std::int32_t fileMissing = -64101, fileMalformed = -64102, notKept = -64103, fileNotUtf8 = -64104;

/// The sample plug-in, with a long name after a dot, on the host without extension.
class SimulatedPlugin : public testing::Test {
protected:
    ~SimulatedPlugin() override { FreeLibrary(module); }

    HMODULE load() const {
        fs::create_directory(folder);
        fs::rename(machine.copyLibrary("simulated", "copy"), library);
        return LoadLibraryExW(library.string<WCHAR>().c_str(), nullptr, 0);
    }
    /// A new list of these devices, or of those that are there, after a refresh with this code.
    ListPtr makeList(const std::string& devices = "", std::int32_t code = success) const {
        if (!devices.empty())
            writeFile(devicesFile, devices);
        vykel::IDeviceList* list = nullptr;
        EXPECT_EQ(getInterface(0, &list), success);
        EXPECT_EQ(refresh(*list), code);
        return ListPtr(list);
    }
    vykel::IDevice& deviceAt(const ListPtr& list, std::uint32_t index) {
        return *list->getDevice(index, 0, &status);
    }
    /// Sets the alias of a device, or its number when there is no alias.
    std::int32_t set(const ListPtr& list, unsigned index, std::uint32_t number, const char* alias = nullptr) {
        alias == nullptr ? deviceAt(list, index).setNumber(number, &status)
                         : deviceAt(list, index).setAlias(alias, 1, 0, &status);
        return std::exchange(status.code, success);
    }
    /// A device in one line: tokens, version, sort key, number, alias.
    std::string describe(const ListPtr& list, std::uint32_t index) {
        vykel::IDevice& device = deviceAt(list, index);
        std::ostringstream text;
        text << device.getPersistentToken(1) << '|' << device.getPersistentToken(2) << '|'
             << device.getVersion() << '|' << device.getSortKey() << '|' << device.getNumber() << '|';
        const char* const alias = device.getAlias();
        return text.str() + (alias == nullptr ? "none" : "'"s + alias);
    }
    std::string report() const {
        return std::to_string(status.code) + status.component + status.file + std::to_string(status.line);
    }

    Machine machine;
    vykel::StatusBlock status = vykel::makeStatusBlock(); ///< for all calls of a test
    const fs::path folder = machine.folder() / "dir.x";
    const std::string name = std::string(93, 'n');
    const fs::path library = folder / (name + (pluginExtension == ".dll"s ? ".dll" : ""));
    const fs::path devicesFile = folder / (name + ".devices");
    const fs::path numbers = machine.configurationFolder() / (name + ".numbers");
    const HMODULE module = load();
    decltype(&vykel_getPluginInterface) const getInterface =
        Symbol{GetProcAddress(module, "vykel_getPluginInterface")};
};

TEST_F(SimulatedPlugin, ReadsEveryField) {
    const ListPtr list =
        makeList("\xEF\xBB\xBF# comment\r\n\r\ntoken=a\r\n"
                 "  alias=\"\"\ttoken=\"b \\\"c\\\" \\\\ # d\" number=0 version=2147483647 # e\r\n"
                 "token=\"\xC3\xBC\" token2=f sortKey=4294967295 number=4294967294 alias=\"1\\n2\"");
    EXPECT_EQ(describe(list, 0), "a|a|1|0|4294967295|none");
    EXPECT_EQ(describe(list, 1), "b \"c\" \\ # d|b \"c\" \\ # d|2147483647|0|0|'");
    EXPECT_EQ(describe(list, 2), "\xC3\xBC|f|1|4294967295|4294967294|'1\n2");
    vykel::IDeviceList* none = nullptr;
    EXPECT_EQ(getInterface(0, nullptr), invalidParameter);
    EXPECT_EQ(getInterface(1, &none), versionMismatch);
    EXPECT_EQ(list->getDevice(3, 0, &status), nullptr);
    EXPECT_EQ(list->getDevice(0, 2, &status), nullptr);
    EXPECT_EQ(set(list, 0, 1), invalidParameter); // the first error stays
    EXPECT_EQ(list->getDevice(0, 2, &status), nullptr);
    EXPECT_EQ(std::exchange(status.code, success), versionMismatch);
    EXPECT_EQ(set(list, 0, vykel::noDeviceNumber) + set(list, 0, 0, "no"), 2 * invalidParameter);
}

TEST_F(SimulatedPlugin, NamesTheBadLineAndKeepsTheGoodDevices) {
    const ListPtr list = makeList("token=good\n");
    fs::rename(devicesFile, folder / "aside");
    EXPECT_EQ(refresh(*list), fileMissing);
    fs::rename(folder / "aside", devicesFile); // the same file again
    EXPECT_TRUE(list->isStale());
    for (const std::string& bad :
         {"tokn"s, "x#"s, "tokn=a"s, "token="s, "token=\"\""s, "version=1"s, "token=a token=b"s, "token=a x"s,
          "token=a\"b\""s, "token=\"a"s, "token=\"\\x\""s, "token=a number=4294967295"s,
          "token=a version=-1"s, "token=a sortKey=1x"s, "token=good"s, "token=\xFF"s, "token=a\0"s, "=a"s,
          "token=\"a\"b=1"s}) {
        writeFile(devicesFile, "token=good\n\n" + bad + "\ntoken=last number=1\n");
        std::memset(status.component, 'x', sizeof status.component + sizeof status.file);
        status.code = 1; // a warning, which an error replaces
        list->refresh(&status);
        EXPECT_EQ(report(), "-64102simulated" + name + ".device3") << bad;
        EXPECT_EQ(list->getCount(), 1u);
    }
    for (const std::string& wide : {"\xFF\xFEt\0o\0"s, "\xFE\xFF\0t\0o"s, "t\0o\0"s})
        makeList(wide, fileNotUtf8);
    EXPECT_TRUE(fs::is_empty(machine.configurationFolder())) << "only what is set makes files";
}

TEST_F(SimulatedPlugin, KeepsNumbersAndAliasesForEveryone) {
    const ListPtr one = makeList("# mine\r\ntoken=a number=1 # old\r\ntoken=b alias=B\ntoken=gone number=4");
    const ListPtr other = makeList();
    EXPECT_EQ(set(one, 2, 9) + set(one, 0, 12) + set(other, 1, 5), success);
    const char* const before = deviceAt(one, 1).getAlias();
    EXPECT_EQ(set(other, 1, 0, "first") + set(other, 1, 0, "\"\\\r\n"), success);
    EXPECT_EQ(deviceAt(other, 0).getNumber() + deviceAt(one, 0).getNumber(), 2 * 12u);
    EXPECT_STREQ(before, "B") << "a call on another device changes no text";
    EXPECT_EQ(describe(one, 1), "b|b|1|0|5|'\"\\\r\n");
    const ListPtr fewer = makeList("token=b\ntoken=c\ntoken=a alias=A");
    EXPECT_EQ(describe(fewer, 0) + describe(fewer, 1) + describe(fewer, 2),
              "b|b|1|0|5|nonec|c|1|0|4294967295|nonea|a|1|0|12|'A");
    writeFile(numbers.string() + ".tmp", std::string(1000, 'x')); // of a process that was killed
    for (std::uint32_t number = 0; number < 200; ++number)
        EXPECT_EQ(set(fewer, 1, number), success);
    EXPECT_EQ(refresh(*fewer), success); // puts a new file in its place
    EXPECT_EQ(readFile(numbers), "number=12 token=\"a\"\nnumber=5 alias=\"\\\"\\\\\\r\\n\" token=\"b\"\n"
                                 "number=199 token=\"c\"\nnumber=9 token=\"gone\"\n");
}

TEST_F(SimulatedPlugin, ReportsAFileThatSomebodySpoiltAndLosesNothing) {
    const std::string devices = "token=a alias=\"\" number=7\ntoken=b";
    EXPECT_EQ(set(makeList(devices), 0, 1), success);
    const std::string spoilt = readFile(numbers) + "\nnumber=2 token=\"cut\nnumber=3 tok\xFF\n\0\n"s;
    writeFile(numbers, spoilt);
    ListPtr list = makeList(devices, -fileMalformed);
    for (std::uint32_t number = 0; number < 200; ++number)
        EXPECT_EQ(set(list, 1, number), success);
    list->refresh(&status);
    EXPECT_EQ(report(), "64102simulated" + name + ".number3");
    EXPECT_EQ(readFile(numbers).find(spoilt), 0u);
    EXPECT_EQ(describe(list, 0) + describe(list, 1), "a|a|1|0|1|'b|b|1|0|199|none");
    std::shared_ptr<void> fault; // while it refreshes
    const std::vector<std::function<void()>> plants = {
        [&] { machine.setConfigurationFolder(false); },
        [&] { fs::create_hard_link(devicesFile, numbers); },
        [&] { writeFile(numbers, "token=a number=1\n"), fs::resize_file(numbers, (16 << 20) + 1); },
#ifndef _WIN32
        [&] { fs::create_symlink(devicesFile, numbers); },
        [&] { fs::create_symlink(devicesFile, numbers.string() + ".lck"), writeFile(numbers, ""); },
        [&] { fault.reset(new ScopedFault({Call::SHGetFolderPathW})); },
        [&] {
            fault.reset(new ScopedFault({Call::CreateFileW, 2}));
        }, // the first is that of the devices
#endif
    };
    for (const std::function<void()>& plant : plants) {
        list.reset(), machine.setConfigurationFolder(false); // nobody can delete what a list has open
        machine.setConfigurationFolder(true);
        plant();
        const ListPtr unkept = makeList(devices, -notKept);
        fault.reset();
        EXPECT_FALSE(unkept->isStale());
        EXPECT_EQ(set(unkept, 0, 8) + set(unkept, 0, 0, "A"), 2 * notKept);
        EXPECT_EQ(report(), "0simulated" + name + ".number0");
        EXPECT_EQ(describe(unkept, 0), "a|a|1|0|7|'");
        EXPECT_EQ(readFile(devicesFile), devices) << &plant - plants.data();
    }
}

TEST_F(SimulatedPlugin, LosesNothingWhenManyWriteAndReplaceAtOnce) {
    const ListPtr list = makeList("token=a\ntoken=bb\ntoken=ccc\ntoken=dddd\n");
    std::vector<std::thread> threads;
    for (unsigned index = 0; index < 4; ++index)
        threads.emplace_back([this, index] {
            vykel::StatusBlock result = vykel::makeStatusBlock();
            const ListPtr own = makeList();
            vykel::IDevice& device = *own->getDevice(index, 0, &result);
            for (unsigned number = 0; number <= 1000; number = device.getNumber() + 1)
                device.setNumber(number, &result);
            EXPECT_EQ(result.code, success);
        });
    for (int round = 0; round < 100; ++round)
        EXPECT_EQ(refresh(*list), success);
    for (unsigned index = 0; index < 4; ++index) {
        threads[index].join();
        EXPECT_EQ(deviceAt(list, index).getNumber(), 1000u);
    }
}

#ifndef _WIN32
TEST_F(SimulatedPlugin, NeitherLosesNorHalfKeepsWhenACallFails) {
    const std::ptrdiff_t resources = winhost::openResources();
    std::string before = "number=3 alias=\"\" token=\"a\"";
    for (int line = 0; line < 110; ++line) // enough for a new file
        before += "\nnumber=109 token=\"b\"";
    for (std::size_t nth = 1, struck = 1; struck != 0; ++nth) {
        const ListPtr list = makeList("token=a alias=\"\" number=8\ntoken=b\n");
        writeFile(numbers, before);
        auto fault = std::make_unique<ScopedFault>(winhost::Fault{Call::Any, nth});
        const std::int32_t code = set(list, 0, 0, "A");
        refresh(*list);
        struck = fault->struck();
        EXPECT_FALSE(fs::exists(numbers.string() + ".tmp")) << nth;
        fault.reset();
        const std::string kept = code < 0 ? "a|a|1|0|3|'b|b|1|0|109|none" : "a|a|1|0|3|'Ab|b|1|0|109|none";
        EXPECT_EQ(describe(list, 0) + describe(list, 1), kept) << nth;
        EXPECT_EQ(describe(makeList(), 0) + describe(makeList(), 1), kept) << nth;
    }
    EXPECT_EQ(winhost::openResources(), resources);
    writeFile(numbers, before);
    const ScopedFault renaming({Call::FlushFileBuffers, 2}); // after that of the new file
    makeList();
    EXPECT_EQ(readFile(numbers), before);
}

TEST_F(SimulatedPlugin, KeepsWhatIsKnownWhenTheFileCannotBeOpened) {
    EXPECT_EQ(set(makeList("token=a alias=A number=7\n"), 0, 5), success);
    const ScopedFault writing({Call::CreateFileW, 3}); // the devices and the lock file come first
    const ListPtr list = makeList("token=a alias=A number=7\n", -notKept);
    EXPECT_EQ(describe(list, 0), "a|a|1|0|5|'A");
    EXPECT_EQ(set(makeList("token=a\n"), 0, 6), success);
    const ScopedFault reading({Call::ReadFile});
    EXPECT_EQ(deviceAt(list, 0).getNumber(), 5u);
    EXPECT_EQ(set(list, 0, 8), notKept); // it may have a number that is not known
    EXPECT_EQ(deviceAt(list, 0).getNumber(), 6u);
    const ScopedFault flushing({Call::FlushFileBuffers});
    EXPECT_EQ(set(list, 0, 0, "B"), notKept);
    EXPECT_EQ(describe(list, 0), "a|a|1|0|6|'A");
    const ScopedFault opening({Call::CreateFileW});
    EXPECT_EQ(deviceAt(list, 0).getNumber(), 6u);
    EXPECT_EQ(opening.struck(), 0u); // nothing is new
}

#endif

} // namespace
} // namespace vykeltest
