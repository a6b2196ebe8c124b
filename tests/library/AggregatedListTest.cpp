#include "support/LibraryTest.h"
#include "support/Unwinding.h"

#include <tuple>

namespace vykeltest {

using AggregatedListTest = LibraryTest;

TEST_F(AggregatedListTest, JoinsTheListsAndRefusesByIndexAndVersion) {
    plugins.devicesOf = {{"a", {{0, 0, 1}, {1, 0, 2}}}, {"c", {{2}, {3}, {4, 0, -1}}}};
    ListPtr list = start({"a", "b", "c"});
    EXPECT_EQ(list->getVersion(), 0);
    EXPECT_EQ(list->getCount(), 0u);
    ASSERT_EQ(refresh(*list), success);
    ASSERT_EQ(list->getCount(), 5u);
    const std::tuple<std::uint32_t, std::int32_t, std::int32_t> cases[] = {
        {0, 1, success},         {0, 2, versionMismatch},  {1, 2, success},
        {2, 0, success},         {3, -5, success},         {4, -1, success},
        {4, 0, versionMismatch}, {5, 0, invalidParameter}, {0xFFFFFFFF, 0, invalidParameter}};
    for (const auto& [index, minimumVersion, code] : cases) {
        SCOPED_TRACE(index);
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vykel::IDevice* const device = list->getDevice(index, minimumVersion, &status);
        EXPECT_EQ(status.code, code);
        EXPECT_EQ(status.line, code == success ? 0u : code == versionMismatch ? 74u : 82u);
        ASSERT_EQ(device != nullptr, code == success);
        EXPECT_TRUE(device == nullptr || device->getNumber() == index);
        status.code = -1; // an earlier error stays, and the call still works
        EXPECT_EQ(list->getDevice(index, minimumVersion, &status), device);
        EXPECT_EQ(status.code, -1);
    }
}

TEST_F(AggregatedListTest, AsksInAFixedOrderAndOnlyWhatIsStale) {
    plugins.devicesOf = {{"a", {{}, {9}}}, {"b", {{1}}}};
    ListPtr list = start({"a", "b"});
    const fs::path lock = machine.configurationFolder() / "DeviceList.lck";
    ASSERT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.takeLog(),
              "a.isStale a.refresh a.getCount a.getDevice(0) a.getDevice(1) "
              "b.isStale b.refresh b.getCount b.getDevice(0) "
              "a.getNumber(0) a.getSortKey(0) a.getNumber(1) b.getNumber(0) a.setNumber(0)");
    EXPECT_TRUE(fs::exists(machine.configurationFolder() / "vykel.lck")); // the aliases were transferred, too
    fs::remove(lock);
    ASSERT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.takeLog(), "a.isStale b.isStale");
    EXPECT_FALSE(fs::exists(lock));
    plugins.answers = {{"b.isStale", Yes}};
    EXPECT_TRUE(list->isStale());
    EXPECT_EQ(plugins.takeLog(), "a.isStale b.isStale");
    plugins.answers = {{"a.isStale", Yes}};
    EXPECT_TRUE(list->isStale());
    EXPECT_EQ(plugins.takeLog(), "a.isStale"); // no need to ask further
    ASSERT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.takeLog(), "a.isStale a.refresh a.getCount a.getDevice(0) a.getDevice(1) b.isStale "
                                 "a.getNumber(0) a.getNumber(1) b.getNumber(0)");
    vykel::StatusBlock failed = vykel::makeStatusBlock();
    failed.code = -1;
    list->refresh(&failed);
    EXPECT_EQ(failed.code, -1);
    EXPECT_EQ(plugins.takeLog(), "");
}

TEST_F(AggregatedListTest, GivesTheLowestFreeNumbersInKeyOrder) {
    constexpr std::uint32_t none = vykel::noDeviceNumber;
    plugins.devicesOf = {{"a", {{0}, {2}, {none, 7}, {none, 0x10003}, {none, 7}}},
                         {"b", {{1000}, {none, 7}, {none, 0x81000002}, {0xFFFFFFFE}}}};
    ASSERT_EQ(refresh(*start({"a", "b"})), success);
    std::vector<std::uint32_t> numbers;
    for (const auto& [name, devices] : plugins.devicesOf)
        for (const FakeDevice& device : devices)
            numbers.push_back(device.number);
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{0, 2, 1, 5, 3, 1000, 4, 6, 0xFFFFFFFE}));
}

TEST_F(AggregatedListTest, KeepsWhatAFailingListDelivered) {
    plugins.devicesOf = {{"a", {{0}}}, {"b", {{1}, {2}, {}, {4}, {5}}}, {"c", {{6}, {}}}};
    ListPtr list = start({"a", "b", "c"});
    const std::tuple<std::string, std::int32_t, std::string> cases[] = {
        {"b.setNumber(2)", -7, "012-4567"},
        {"b.none", 0, "01234567"}, // it is offered the number again
        {"b.refresh", -7, "067"},
        {"b.getDevice(2)", -7, "01267"},
        {"b.getDevice(2)", Null, "0124567"},
        {"b.getDevice(0)", -7, "067"}};
    for (const auto& [call, answer, expected] : cases) {
        SCOPED_TRACE(call);
        plugins.answers = {{call, answer}, {"b.isStale", Yes}};
        EXPECT_EQ(refresh(*list), success);
        std::string numbers;
        vykel::StatusBlock status = vykel::makeStatusBlock();
        for (std::uint32_t i = 0; i < list->getCount(); ++i) {
            const std::uint32_t number = list->getDevice(i, 0, &status)->getNumber();
            numbers += number == vykel::noDeviceNumber ? "-" : std::to_string(number);
        }
        EXPECT_EQ(numbers, expected);
        const bool asked = plugins.takeLog({"getCount"}).find('b') != std::string::npos;
        EXPECT_EQ(asked, call != "b.refresh"); // a failed refresh is the last that it is asked
    }
}

TEST_F(AggregatedListTest, AFailedRefreshLeavesItStaleAndReadable) {
    plugins.devicesOf = {{"a", {{}}}, {"b", {{}}}};
    ListPtr list = start({"a", "b"});
    ASSERT_EQ(refresh(*list), success);
    machine.setConfigurationFolder(false);
    EXPECT_EQ(refresh(*list), success); // nothing to do: no file is needed
    plugins.answers["b.isStale"] = Yes;
    EXPECT_EQ(refresh(*list), configurationFault);
    whileUnwinding([&] { EXPECT_EQ(refresh(*list), configurationFault); });
    EXPECT_EQ(list->getCount(), 2u);
    plugins.answers = {{"a.isStale", ThrowOwnType}};
    vykel::StatusBlock status = vykel::makeStatusBlock();
    list->refresh(&status);
    EXPECT_EQ(std::string(status.component) + status.file,
              "vykeldevesource/vykeldevenum/AggregatedDeviceList.cpp");
    EXPECT_EQ(status.line, 50u);
    plugins.answers.clear();
    EXPECT_TRUE(list->isStale());
    machine.setConfigurationFolder(true);
    plugins.takeLog();
    EXPECT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.takeLog({"refresh"}), "a.refresh b.refresh");
    EXPECT_FALSE(list->isStale());
}

TEST_F(AggregatedListTest, AttachIsTakenBackWhenOneListRefuses) {
    ListPtr list = start({"a", "b", "c", "d"});
    plugins.answers["a.detach"] = ThrowOwnType; // nobody can act on it
    const std::pair<std::int32_t, std::int32_t> cases[] = {
        {Ordinary, success}, {-7, -7}, {ThrowOwnType, generalFault}};
    for (const auto& [answer, code] : cases) {
        plugins.answers["c.attach"] = answer;
        vykel::StatusBlock status = vykel::makeStatusBlock();
        list->attach(9, &status);
        EXPECT_EQ(status.code, code);
        EXPECT_EQ(status.line, code == generalFault ? 93u : 0u);
        EXPECT_EQ(plugins.takeLog(), std::string("a.attach(9) b.attach(9) c.attach(9) ") +
                                         (code == success ? "d.attach(9)" : "a.detach(9) b.detach(9)"));
    }
    plugins.answers.clear();
    list->detach(9);
    EXPECT_EQ(plugins.takeLog(), "a.detach(9) b.detach(9) c.detach(9) d.detach(9)");
    const ListPtr other = library.newList();
    list.reset();
    EXPECT_EQ(plugins.takeLog({"release"}), "a.release b.release c.release d.release");
    EXPECT_EQ(refresh(*other), success);
}

} // namespace vykeltest
