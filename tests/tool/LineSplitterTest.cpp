#include "child/LineSplitter.h"
#include <gtest/gtest.h>
#include <vector>

namespace vykeltest {
namespace {

TEST(LineSplitter, KeepsTheLastLineAndBoundsALongOne) {
    std::vector<std::size_t> sizes;
    vykeldev::LineSplitter lines([&](const std::string& line) { sizes.push_back(line.size()); });
    const std::string flood(vykeldev::LineSplitter::maxLineBytes + 9, 'x');
    lines.add((flood + "\r\n\nend").c_str(), flood.size() + 6);
    lines.end();
    EXPECT_EQ(sizes, (std::vector<std::size_t>{flood.size() - 9, 0, 3}));
}

} // namespace
} // namespace vykeltest
