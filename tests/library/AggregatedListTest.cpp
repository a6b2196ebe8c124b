#include "support/LibraryTest.h"

#include <cstring>
#include <functional>

namespace vykeltest {

class AggregatedListTest : public LibraryTest {
protected:
    void startList(const std::vector<std::string>& names) {
        start(names);
        list = library.newList();
        plugins.takeLog();
    }

    ListPtr list; // released before the library is finalised
};

TEST_F(AggregatedListTest, WithoutPluginsIsStaleUntilItsFirstRefresh) {
    startList({});
    EXPECT_TRUE(list->isStale());
    EXPECT_EQ(refresh(*list), 0);
    EXPECT_FALSE(list->isStale());
    EXPECT_EQ(list->getVersion(), 0);
    EXPECT_EQ(list->getCount(), 0u);
    EXPECT_EQ(fs::file_size(machine.configurationFolder() / "DeviceList.lck"), 0u);
}

TEST_F(AggregatedListTest, JoinsTheListsAndRefusesByIndexAndVersion) {
    plugins.devicesOf = {{"a", {{0, 0, 1}, {1, 0, 2}}}, {"c", {{2}, {3}, {4, 0, -1}}}};
    startList({"a", "b", "c"});
    EXPECT_EQ(list->getCount(), 0u);
    ASSERT_EQ(refresh(*list), 0);
    ASSERT_EQ(list->getCount(), 5u);
    const struct {
        std::uint32_t index;
        std::int32_t minimumVersion;
        std::int32_t code;
    } cases[] = {{0, 1, 0},      {0, 2, -63193}, {1, 2, 0},
                 {2, 0, 0},      {3, -5, 0},     {4, -1, 0},
                 {4, 0, -63193}, {5, 0, -52005}, {0xFFFFFFFF, 0, -52005}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.index);
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vykel::IDevice* const device = list->getDevice(each.index, each.minimumVersion, &status);
        EXPECT_EQ(status.code, each.code);
        ASSERT_EQ(device != nullptr, each.code == 0);
        EXPECT_TRUE(device == nullptr || device->getNumber() == each.index);
        status.code = -1; // an earlier error stays, and hinders nothing
        EXPECT_EQ(list->getDevice(each.index, each.minimumVersion, &status), device);
        EXPECT_EQ(status.code, -1);
    }
}

TEST_F(AggregatedListTest, AsksInAFixedOrderAndOnlyWhatIsStale) {
    plugins.devicesOf = {{"a", {{}, {9}}}, {"b", {{1}}}};
    startList({"a", "b"});
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.takeLog(),
              "a.isStale a.refresh a.getCount a.getDevice(0) a.getDevice(1) "
              "b.isStale b.refresh b.getCount b.getDevice(0) "
              "a.getNumber(0) a.getSortKey(0) a.getNumber(1) b.getNumber(0) a.setNumber(0)");
    fs::remove(machine.configurationFolder() / "DeviceList.lck");
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.takeLog(), "a.isStale b.isStale");
    EXPECT_FALSE(fs::exists(machine.configurationFolder() / "DeviceList.lck"));
    plugins.answers["a.isStale"] = Yes;
    EXPECT_TRUE(list->isStale());
    EXPECT_EQ(plugins.takeLog(), "a.isStale"); // no need to ask further
    ASSERT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.takeLog(), "a.isStale a.refresh a.getCount a.getDevice(0) a.getDevice(1) b.isStale "
                                 "a.getNumber(0) a.getNumber(1) b.getNumber(0)");
    vykel::StatusBlock failed = vykel::makeStatusBlock();
    failed.code = -1;
    list->refresh(&failed);
    EXPECT_EQ(failed.code, -1);
    EXPECT_EQ(plugins.takeLog(), "");
}

TEST_F(AggregatedListTest, KeepsWhatAFailingListDelivered) {
    plugins.devicesOf = {{"a", {{0}}}, {"b", {{1}, {2}, {3}, {4}, {5}}}, {"c", {{6}}}};
    startList({"a", "b", "c"});
    const struct {
        const char* call;
        std::int32_t answer;
        std::string numbers;
    } cases[] = {{"b.none", 0, "0123456"},       {"b.refresh", -7, "06"},
                 {"b.getDevice(2)", -7, "0126"}, {"b.getDevice(2)", Null, "012456"},
                 {"b.getDevice(0)", -7, "06"},   {"b.setNumber", -7, "0123456"}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.call);
        plugins.answers = {{each.call, each.answer}, {"b.isStale", Yes}};
        EXPECT_EQ(refresh(*list), 0);
        std::string numbers;
        for (std::uint32_t i = 0; i < list->getCount(); ++i) {
            vykel::StatusBlock status = vykel::makeStatusBlock();
            numbers += std::to_string(list->getDevice(i, 0, &status)->getNumber());
        }
        EXPECT_EQ(numbers, each.numbers);
    }
}

TEST_F(AggregatedListTest, AFailedRefreshLeavesItStaleAndReadable) {
    plugins.devicesOf = {{"a", {{}}}, {"b", {{}}}};
    startList({"a", "b"});
    ASSERT_EQ(refresh(*list), 0);
    machine.setConfigurationFolder(false);
    EXPECT_EQ(refresh(*list), 0); // nothing to do: no file is needed
    plugins.answers["b.isStale"] = Yes;
    EXPECT_EQ(refresh(*list), -50209);
    EXPECT_EQ(list->getCount(), 2u);
    machine.setFolderName(machine.folderName() + "\\missing");
    EXPECT_EQ(refresh(*list), -52006);
    plugins.answers.clear();
    EXPECT_TRUE(list->isStale());
    machine.setFolderName(machine.folderName());
    machine.setConfigurationFolder(true);
    plugins.takeLog();
    EXPECT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.takeLog({"refresh"}), "a.refresh b.refresh");
    EXPECT_FALSE(list->isStale());
}

TEST_F(AggregatedListTest, AttachIsTakenBackWhenOneListRefuses) {
    startList({"a", "b", "c", "d"});
    plugins.answers["a.detach"] = ThrowOwnType; // nobody can act on it
    const struct {
        std::int32_t answer;
        std::int32_t code;
        const char* log;
    } cases[] = {{0, 0, "a.attach(9) b.attach(9) c.attach(9) d.attach(9)"},
                 {-7, -7, "a.attach(9) b.attach(9) c.attach(9) a.detach(9) b.detach(9)"},
                 {ThrowOwnType, -52003, "a.attach(9) b.attach(9) c.attach(9) a.detach(9) b.detach(9)"}};
    for (const auto& each : cases) {
        plugins.answers["c.attach"] = each.answer;
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->attach(9, &status);
        EXPECT_EQ(status.code, each.code);
        EXPECT_EQ(plugins.takeLog(), each.log);
    }
    plugins.answers.clear();
    list->detach(9);
    EXPECT_EQ(plugins.takeLog(), "a.detach(9) b.detach(9) c.detach(9) d.detach(9)");
    const ListPtr other = library.newList();
    plugins.takeLog();
    list.reset();
    EXPECT_EQ(plugins.takeLog(), "a.release b.release c.release d.release");
    EXPECT_EQ(refresh(*other), 0);
}

TEST_F(AggregatedListTest, WritesOnlyWhatTheCallersBlockHolds) {
    startList({});
    machine.setConfigurationFolder(false);
    for (const std::uint32_t size : {8u, 207u, 208u, 300u}) {
        SCOPED_TRACE(size);
        vykel::StatusBlock status;
        std::memset(&status, 'G', sizeof status);
        status.structSize = size;
        status.code = 0;
        const vykel::StatusBlock before = status;
        list->refresh(&status);
        EXPECT_EQ(status.code, -50209);
        EXPECT_EQ(std::memcmp(status.unassigned, before.unassigned, sizeof before.unassigned), 0);
        if (size < 208) {
            status.code = 0;
            EXPECT_EQ(std::memcmp(&status, &before, sizeof before), 0);
            continue;
        }
        EXPECT_STREQ(status.component, "eldevenum");
        EXPECT_STREQ(status.file, "includes/pellumkelddk/user/FileLock.cpp");
        EXPECT_EQ(status.line, 47u);
        EXPECT_EQ(status.reserved, 0u);
    }
    const struct {
        std::uint32_t index;
        std::uint32_t line;
    } refused[] = {{0, 74}, {9, 82}};
    machine.setConfigurationFolder(true);
    plugins.devicesOf["a"] = {{0}};
    list.reset();
    library.finalize();
    startList({"a"});
    refresh(*list);
    for (const auto& each : refused) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->getDevice(each.index, 1, &status);
        EXPECT_STREQ(status.component, "vykeldeve");
        EXPECT_STREQ(status.file, "source/vykeldevenum/AggregatedDeviceList.cpp");
        EXPECT_EQ(status.line, each.line);
    }
}

TEST_F(AggregatedListTest, ReportsAlsoWhileTheClientUnwinds) {
    startList({"a"});
    machine.setConfigurationFolder(false);
    struct Client {
        std::function<void()> end;
        ~Client() { end(); }
    };
    std::int32_t codes[3] = {};
    try {
        const Client client{[&] {
            codes[0] = refresh(*list);
            machine.setFolderName(machine.folderName() + "\\missing");
            codes[1] = refresh(*list);
            vykel::IDeviceList* none = nullptr;
            codes[2] = library.getAllKelDevices(0, &none);
        }};
        throw 1;
    } catch (int) {
    }
    EXPECT_EQ(codes[0], -50209);
    EXPECT_EQ(codes[1], -52006);
    EXPECT_EQ(codes[2], -52006);
}

} // namespace vykeltest
