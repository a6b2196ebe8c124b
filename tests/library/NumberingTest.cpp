#include "support/LibraryTest.h"
#include <numeric>

namespace vykeltest {

using NumberingTest = LibraryTest;

TEST_F(NumberingTest, GivesTheLowestFreeNumbersInKeyOrder) {
    constexpr std::uint32_t none = vykel::noDeviceNumber;
    std::vector<std::uint32_t> firstNumbers(64, 64);
    std::iota(firstNumbers.begin(), firstNumbers.end() - 1, 0);
    const struct {
        std::vector<FakeDevice> a;
        std::vector<FakeDevice> b;
        std::vector<std::uint32_t> numbers;
    } cases[] = {
        {{{0}, {2}, {none, 7}, {none, 3}, {none, 7}}, {}, {0, 2, 3, 1, 4}},
        {{{0}, {1}, {2}}, {{none, 1}, {none, 0}}, {0, 1, 2, 4, 3}},
        {{{none, 5}, {none, 5}}, {{none, 5}, {none, 4}}, {1, 2, 3, 0}}, // equal keys: in the lists' order
        {{{none, 0x81000002}, {none, 0x10003}, {none, 0x104}, {none, 5}},
         {},
         {3, 2, 1, 0}}, // each byte counts
        {{{1000}, {0xFFFFFFFE}, {none}}, {{1}, {none}}, {1000, 0xFFFFFFFE, 0, 1, 2}},
        {{{3}, {3}}, {{0}}, {3, 3, 0}},                      // all have one, if not a different one
        {std::vector<FakeDevice>(63), {{64}}, firstNumbers}, // one more than there are bits for
    };
    start({"a", "b"});
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        plugins.devicesOf = {{"a", each.a}, {"b", each.b}};
        EXPECT_EQ(refresh(*library.newList()), success);
        std::vector<std::uint32_t> numbers;
        for (const auto& [name, devices] : plugins.devicesOf)
            for (const FakeDevice& device : devices)
                numbers.push_back(device.number);
        EXPECT_EQ(numbers, each.numbers);
    }
}

} // namespace vykeltest
