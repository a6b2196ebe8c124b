#include "support/LibraryTest.h"

#include <thread>

namespace vykeltest {

using LifecycleTest = LibraryTest;

TEST_F(LifecycleTest, TestsArgumentsInOrder) {
    auto* const untouched = reinterpret_cast<vykel::IDeviceList*>(8);
    vykel::IDeviceList* list = untouched;
    EXPECT_EQ(library.finalize(), -52003);
    EXPECT_EQ(library.getAllKelDevices(1, nullptr), -52003);
    EXPECT_EQ(library.getAllKelDevices(0, &list), -52003);
    ASSERT_EQ(library.initialize(), 0);
    EXPECT_EQ(library.getAllKelDevices(1, nullptr), -63193);
    EXPECT_EQ(library.getAllKelDevices(-1, &list), -63193);
    EXPECT_EQ(library.getAllKelDevices(0, nullptr), -52005);
    ASSERT_EQ(library.finalize(), 0);
    EXPECT_EQ(library.finalize(), -52003);
    EXPECT_EQ(library.getAllKelDevices(1, nullptr), -63193); // known by then: the version comes first
    EXPECT_EQ(library.getAllKelDevices(0, nullptr), -52005);
    EXPECT_EQ(library.getAllKelDevices(0, &list), -52003);
    EXPECT_EQ(list, untouched);
}

TEST_F(LifecycleTest, CountsInitialisations) {
    start({"a", "b"});
    EXPECT_EQ(library.initialize(), 0);
    EXPECT_EQ(library.finalize(), 0);
    EXPECT_EQ(plugins.takeLog(), "");
    EXPECT_EQ(library.finalize(), 0);
    EXPECT_EQ(plugins.takeLog(), "a.finalize a.unload b.finalize b.unload");
    EXPECT_EQ(library.finalize(), -52003);
    EXPECT_EQ(library.initialize(), 0);
    EXPECT_EQ(plugins.takeLog(), "a.initialize b.initialize");
}

TEST_F(LifecycleTest, RetriesAfterAFailure) {
    machine.setPluginsKey(false);
    EXPECT_EQ(library.initialize(), -52006);
    EXPECT_EQ(library.initialize(), -52006);
    EXPECT_EQ(library.finalize(), -52003);
    machine.setPluginsKey(true);
    EXPECT_EQ(library.initialize(), 0);

    machine.setFolderName(machine.folderName() + "\\missing");
    vykel::IDeviceList* list = nullptr;
    EXPECT_EQ(library.getAllKelDevices(0, &list), -52006);
    EXPECT_EQ(list, nullptr);
    machine.setFolderName(machine.folderName());
    EXPECT_NE(library.newList(), library.newList());
}

TEST_F(LifecycleTest, UnloadingWithoutFinalizeCallsNoPlugin) {
    const auto path = machine.install("fake_plugin", "a").string<WCHAR>();
    ASSERT_EQ(library.initialize(), 0);
    plugins.takeLog();
    library.~LoadedLibrary();
    EXPECT_EQ(plugins.takeLog(), "");
    // The plug-in is still there: taking a reference of our own and giving back both unloads it.
    const HMODULE plugin = LoadLibraryExW(path.c_str(), nullptr, 0);
    FreeLibrary(plugin);
    EXPECT_EQ(plugins.takeLog(), "");
    FreeLibrary(plugin);
    EXPECT_EQ(plugins.takeLog(), "a.unload");
    new (&library) LoadedLibrary;
}

TEST_F(LifecycleTest, ConcurrentFirstCallsInitialiseOnce) {
    machine.install("fake_plugin", "a");
    constexpr int count = 8;
    std::vector<std::thread> threads;
    std::vector<std::int32_t> codes(count, 1);
    for (std::int32_t& code : codes) {
        threads.emplace_back([this, &code] {
            code = library.initialize();
            library.newList();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(codes, std::vector<std::int32_t>(count, 0));
    EXPECT_EQ(plugins.takeLog({"initialize", "finalize"}), "a.initialize");
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(library.finalize(), 0);
    EXPECT_EQ(plugins.takeLog({"initialize", "finalize"}), "a.finalize");
}

} // namespace vykeltest
