#include "support/LibraryTest.h"
#include "support/Unwinding.h"

#include <algorithm>
#include <thread>

namespace vykeltest {

using LifecycleTest = LibraryTest;

TEST_F(LifecycleTest, TestsArgumentsInOrder) {
    using Codes = std::vector<std::int32_t>;
    auto* const untouched = reinterpret_cast<vykel::IDeviceList*>(8);
    vykel::IDeviceList* list = untouched;
    const auto refusals = [&] {
        return Codes{library.getAllKelDevices(1, nullptr), library.getAllKelDevices(-1, &list),
                     library.getAllKelDevices(0, nullptr)};
    };
    const Codes ofArguments = {versionMismatch, versionMismatch, invalidParameter};
    EXPECT_EQ(refusals(), Codes(3, generalFault));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(library.finalize(), generalFault);
        EXPECT_EQ(library.getAllKelDevices(0, &list), generalFault);
        ASSERT_EQ(library.initialize(), success);
        EXPECT_EQ(refusals(), ofArguments);
        ASSERT_EQ(library.finalize(), success);
        EXPECT_EQ(refusals(), ofArguments); // initialised once: the arguments come first
    }
    EXPECT_EQ(list, untouched);
}

TEST_F(LifecycleTest, RetriesAfterAFailure) {
    vykel::IDeviceList* list = nullptr;
    machine.setPluginsKey(false);
    EXPECT_EQ(library.initialize(), resourceNotFound);
    whileUnwinding([&] { EXPECT_EQ(library.initialize(), resourceNotFound); });
    EXPECT_EQ(library.getAllKelDevices(0, &list), generalFault);
    EXPECT_EQ(library.finalize(), generalFault);
    machine.setPluginsKey(true);
    EXPECT_EQ(library.initialize(), success);
    machine.setFolderName(machine.folderName() + "\\missing");
    EXPECT_EQ(library.getAllKelDevices(0, &list), resourceNotFound);
    whileUnwinding([&] { EXPECT_EQ(library.getAllKelDevices(0, &list), resourceNotFound); });
    EXPECT_EQ(list, nullptr);
    machine.setFolderName(machine.folderName());
    EXPECT_NE(library.newList(), library.newList());
    const ListPtr fresh = library.newList();
    EXPECT_EQ(refresh(*fresh), success);
    EXPECT_TRUE(!fresh->isStale() && fs::exists(machine.configurationFolder() / "DeviceList.lck"));
}

/// A call from two threads at once would be a race in the log of the calls.
TEST_F(LifecycleTest, AsksPluginsForListsFromOneThreadAtATime) {
    start({"a"});
    std::vector<ListPtr> mine(300), others(300); // their release, which is not locked, comes after both
    const auto make = [&] { return library.newList(); };
    std::thread other([&] { std::generate(others.begin(), others.end(), make); });
    std::generate(mine.begin(), mine.end(), make);
    other.join();
}

TEST_F(LifecycleTest, OutlivesAPluginThatCallsBackWhileItIsFinalised) {
    start({"a", "b"}).reset();
    vykel::IDeviceList* list = nullptr;
    plugins.actions["a.finalize"] = [&] { EXPECT_EQ(library.getAllKelDevices(0, &list), generalFault); };
    plugins.actions["b.finalize"] = [&] { EXPECT_EQ(library.initialize(), success); };
    EXPECT_EQ(library.finalize(), success);
    EXPECT_EQ(plugins.takeLog({"initialize", "finalize"}), "a.finalize b.finalize a.initialize b.initialize");
    EXPECT_NE(library.newList(), nullptr);
    EXPECT_EQ(library.finalize(), success);
    EXPECT_EQ(library.finalize(), generalFault);
}

TEST_F(LifecycleTest, UnloadingWithoutFinalizeCallsNoPlugin) {
    const auto path = machine.install("fake_plugin", "a").string<WCHAR>();
    ASSERT_EQ(library.initialize(), success);
    plugins.takeLog();
    library.~LoadedLibrary();
    // The plug-in is still there: taking a reference of our own and giving back both unloads it.
    const HMODULE plugin = LoadLibraryExW(path.c_str(), nullptr, 0);
    FreeLibrary(plugin);
    EXPECT_EQ(plugins.takeLog(), "");
    FreeLibrary(plugin);
    EXPECT_EQ(plugins.takeLog(), "a.unload");
    new (&library) LoadedLibrary;
}

} // namespace vykeltest
