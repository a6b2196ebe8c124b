#include "child/LineSplitter.h"
#include <gtest/gtest.h>
#include <vector>

namespace vykeltest {
namespace {

TEST(LineSplitter, BoundsALongLine) {
    std::vector<std::size_t> sizes;
    vykeldev::LineSplitter lines([&](const std::string& line) { sizes.push_back(line.size()); });
    const std::string flood(vykeldev::LineSplitter::maxLineBytes + 9, 'x');
    lines.add((flood + "\r\n\n").c_str(), flood.size() + 3);
    EXPECT_EQ(sizes, (std::vector<std::size_t>{flood.size() - 9, 0}));
}

} // namespace
} // namespace vykeltest
