#include "support/LibraryTest.h"

#include <algorithm>

namespace vykeltest {

using NumberingTest = LibraryTest;

TEST_F(NumberingTest, GivesTheLowestFreeNumbersInKeyOrder) {
    constexpr std::uint32_t none = vykel::noDeviceNumber;
    struct Case {
        std::vector<FakeDevice> a;
        std::vector<FakeDevice> b;
        std::vector<std::uint32_t> numbers;
        std::size_t set;
    };
    const Case cases[] = {
        {{{0}, {2}, {none, 7}, {none, 3}, {none, 7}}, {}, {0, 2, 3, 1, 4}, 3},
        {{{0}, {1}, {2}}, {{none, 1}, {none, 0}}, {0, 1, 2, 4, 3}, 2},
        {{{none, 5}, {none, 5}}, {{none, 5}, {none, 4}}, {1, 2, 3, 0}, 4}, // ties: in the lists' order
        {{{none, 0xFFFFFFFF}, {none, 0}, {none, 0x80000000}}, {}, {2, 0, 1}, 3},
        {{{1000}, {0xFFFFFFFE}, {none}}, {{1}, {none}}, {1000, 0xFFFFFFFE, 0, 1, 2}, 2},
        {{{3}, {3}}, {{0}}, {3, 3, 0}, 0}, // all have one, if not a different one
        {{}, {}, {}, 0},
    };
    start({"a", "b"});
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        plugins.devicesOf = {{"a", each.a}, {"b", each.b}};
        const ListPtr list = library.newList();
        EXPECT_EQ(refresh(*list), 0);
        std::vector<std::uint32_t> numbers;
        for (const char* const name : {"a", "b"})
            for (const FakeDevice& device : plugins.devicesOf[name])
                numbers.push_back(device.number);
        EXPECT_EQ(numbers, each.numbers);
        const std::string log = plugins.takeLog({"setNumber"});
        EXPECT_EQ(static_cast<std::size_t>(std::count(log.begin(), log.end(), '(')), each.set);
    }
}

TEST_F(NumberingTest, OffersANumberAgainWhenADeviceRefusedIt) {
    plugins.devicesOf["a"] = {{}, {}, {}};
    plugins.answers = {{"a.setNumber(1)", -7}, {"a.isStale", Yes}};
    start({"a"});
    const ListPtr list = library.newList();
    EXPECT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.devicesOf["a"][1].number, vykel::noDeviceNumber);
    EXPECT_EQ(plugins.devicesOf["a"][2].number, 2u);
    plugins.answers.erase("a.setNumber(1)");
    EXPECT_EQ(refresh(*list), 0);
    EXPECT_EQ(plugins.devicesOf["a"][1].number, 1u);
}

TEST_F(NumberingTest, NumbersAMillionDevices) {
    constexpr std::uint32_t count = 1000000;
    start({"a"});
    plugins.logging = false;
    auto& devices = plugins.devicesOf["a"];
    devices.resize(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        devices[i].sortKey = count - i;
        if (i % 3 == 0)
            devices[i].number = i;
    }
    const ListPtr list = library.newList();
    EXPECT_EQ(refresh(*list), 0);
    EXPECT_EQ(list->getCount(), count);
    std::vector<bool> seen(count);
    for (const FakeDevice& device : devices) {
        ASSERT_LT(device.number, count);
        ASSERT_FALSE(seen[device.number]) << device.number;
        seen[device.number] = true;
    }
    EXPECT_EQ(devices[count - 2].number, 1u); // 0 is in use; its key is the lowest of those that wait
}

} // namespace vykeltest
