#include "support/LibraryTest.h"
#include "support/TestFiles.h"

#include <chrono>
#include <fstream>
#include <set>
#include <thread>

namespace vykeltest {

using ProcessesTest = LibraryTest;

namespace {

constexpr std::uint32_t devicesEach = 25;
constexpr int processes = 8;
const char* const names[] = {"a", "b"};

/// Two plug-ins whose devices' numbers lie in one file. Each process numbers them in an order of its own, so
/// that two that overlap would give a number twice.
void shareDevices(FakePlugins& plugins, const Machine& machine) {
    plugins.numbersFile = machine.folder() / "numbers";
    std::uint32_t slot = 0;
    for (const char* const name : names) {
        for (std::uint32_t i = 0; i < devicesEach; ++i, ++slot)
            plugins.devicesOf[name].push_back(
                {vykel::noDeviceNumber, (slot + processId()) * 7 % (2 * devicesEach), 0, slot});
    }
}

int refreshOnce() {
    const Machine machine;
    FakePlugins plugins;
    shareDevices(plugins, machine);
    const LoadedLibrary library;
    waitFor(machine.folder() / "go");
    std::int32_t code = library.initialize();
    if (code == 0)
        code = refresh(*library.newList());
    return code != 0 || library.finalize() != 0 ? 1 : 0;
}
const NamedRole refreshOnceRole("refreshOnce", refreshOnce);

int holdLock() {
    const Machine machine;
    const auto path = (machine.configurationFolder() / "DeviceList.lck").string();
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
    OVERLAPPED overlapped = {};
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &overlapped) == FALSE)
        return 1;
    std::ofstream(machine.folder() / "held").flush();
    waitFor(machine.folder() / "release");
    CloseHandle(file);
    return 0;
}
const NamedRole holdLockRole("holdLock", holdLock);

} // namespace

TEST_F(ProcessesTest, RefreshingAtOnceLosesNoNumber) {
    shareDevices(plugins, machine);
    const std::vector<std::uint32_t> unnumbered(2 * devicesEach, vykel::noDeviceNumber);
    std::ofstream(plugins.numbersFile, std::ios::binary)
        .write(reinterpret_cast<const char*>(unnumbered.data()),
               static_cast<std::streamsize>(unnumbered.size() * 4));
    start({names[0], names[1]});
    std::vector<ChildProcess> children;
    for (int i = 0; i < processes; ++i)
        children.emplace_back("refreshOnce");
    std::ofstream(machine.folder() / "go").flush();
    EXPECT_EQ(refresh(*library.newList()), 0);
    for (ChildProcess& child : children)
        EXPECT_EQ(child.wait(), 0);
    std::set<std::uint32_t> numbers;
    for (const char* const name : names)
        for (FakeDevice& device : plugins.devicesOf[name])
            numbers.insert(plugins.getNumber(device));
    EXPECT_EQ(numbers.size(), 2 * devicesEach);
    EXPECT_EQ(*numbers.rbegin(), 2 * devicesEach - 1);
}

TEST_F(ProcessesTest, WaitsForALockThatAnotherProcessHolds) {
    start({"a"});
    ChildProcess holder("holdLock");
    waitFor(machine.folder() / "held");
    const ListPtr list = library.newList();
    std::thread refreshing([&] {
        EXPECT_EQ(refresh(*list), 0);
        EXPECT_TRUE(fs::exists(machine.folder() / "release")) << "went on while the lock was held";
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    std::ofstream(machine.folder() / "release").flush();
    refreshing.join();
    EXPECT_EQ(holder.wait(), 0);
}

} // namespace vykeltest
