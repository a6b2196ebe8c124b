#include "support/LibraryTest.h"
#include "support/TestFiles.h"

#include <set>

namespace vykeltest {

using ProcessesTest = LibraryTest;

namespace {

constexpr std::uint32_t devicesEach = 25;
const std::vector<std::string> names = {"a", "b"};

/// Two plug-ins whose devices' numbers are in one file. Each process numbers them in an order of its own, so
/// that two that overlap would give a number twice.
void shareDevices(FakePlugins& plugins, const Machine& machine) {
    plugins.numbersFile = machine.folder() / "numbers";
    std::uint32_t slot = 0;
    for (const std::string& name : names)
        for (std::uint32_t i = 0; i < devicesEach; ++i, ++slot)
            plugins.devicesOf[name].push_back(
                {vykel::noDeviceNumber, (slot + processId()) * 7 % (2 * devicesEach), 0, slot});
}

int refreshOnce() {
    const Machine machine;
    FakePlugins plugins;
    shareDevices(plugins, machine);
    const LoadedLibrary library;
    waitFor(machine.folder() / "go");
    std::int32_t code = library.initialize();
    if (code == success)
        code = refresh(*library.newList());
    return code != success || library.finalize() != success ? 1 : 0;
}
const NamedRole refreshOnceRole("refreshOnce", refreshOnce);

} // namespace

TEST_F(ProcessesTest, RefreshingAtOnceLosesNoNumber) {
    constexpr int processes = 8;
    shareDevices(plugins, machine);
    constexpr std::size_t devices = 2 * devicesEach;
    writeFile(plugins.numbersFile, std::string(devices * sizeof(std::uint32_t), '\xFF'));
    start(names);
    std::vector<ChildProcess> children;
    for (int i = 0; i < processes; ++i)
        children.emplace_back("refreshOnce");
    writeFile(machine.folder() / "go", "");
    EXPECT_EQ(refresh(*library.newList()), success);
    for (ChildProcess& child : children)
        EXPECT_EQ(child.wait(), 0);
    std::set<std::uint32_t> numbers;
    for (const std::string& name : names)
        for (FakeDevice& device : plugins.devicesOf[name])
            numbers.insert(plugins.getNumber(device));
    EXPECT_EQ(numbers.size(), devices);
    EXPECT_EQ(*numbers.rbegin(), devices - 1);
}

} // namespace vykeltest
