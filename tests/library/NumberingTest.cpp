#include "support/LibraryTest.h"

namespace vykeltest {

using NumberingTest = LibraryTest;

TEST_F(NumberingTest, GivesTheLowestFreeNumbersInKeyOrder) {
    constexpr std::uint32_t none = vykel::noDeviceNumber;
    struct Case {
        std::vector<FakeDevice> a;
        std::vector<FakeDevice> b;
        std::vector<std::uint32_t> numbers;
    };
    const Case cases[] = {
        {{{0}, {2}, {none, 7}, {none, 3}, {none, 7}}, {}, {0, 2, 3, 1, 4}},
        {{{0}, {1}, {2}}, {{none, 1}, {none, 0}}, {0, 1, 2, 4, 3}},
        {{{none, 5}, {none, 5}}, {{none, 5}, {none, 4}}, {1, 2, 3, 0}}, // equal keys: in the lists' order
        {{{none, 0xFFFFFFFF}, {none, 0}, {none, 0x80000000}}, {}, {2, 0, 1}},
        {{{1000}, {0xFFFFFFFE}, {none}}, {{1}, {none}}, {1000, 0xFFFFFFFE, 0, 1, 2}},
        {{{3}, {3}}, {{0}}, {3, 3, 0}}, // all have one, if not a different one
        {{}, {}, {}},
    };
    start({"a", "b"});
    for (const Case& each : cases) {
        SCOPED_TRACE(&each - cases);
        plugins.devicesOf = {{"a", each.a}, {"b", each.b}};
        EXPECT_EQ(refresh(*library.newList()), success);
        std::vector<std::uint32_t> numbers;
        for (const char* const name : {"a", "b"})
            for (const FakeDevice& device : plugins.devicesOf[name])
                numbers.push_back(device.number);
        EXPECT_EQ(numbers, each.numbers);
    }
}

TEST_F(NumberingTest, OffersANumberAgainWhenADeviceRefusedIt) {
    plugins.devicesOf["a"] = {{}, {}, {}};
    plugins.answers = {{"a.setNumber(1)", -7}, {"a.isStale", Yes}};
    start({"a"});
    const ListPtr list = library.newList();
    EXPECT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.devicesOf["a"][1].number, vykel::noDeviceNumber);
    EXPECT_EQ(plugins.devicesOf["a"][2].number, 2u);
    plugins.answers.erase("a.setNumber(1)");
    EXPECT_EQ(refresh(*list), success);
    EXPECT_EQ(plugins.devicesOf["a"][1].number, 1u);
}

} // namespace vykeltest
