#include "errors/Status.h"

#include "errors/ErrorInfo.h"
#include "errors/ErrorInfoText.h"
#include "errors/StatusBlocks.h"
#include "support/OwnedStatus.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <numeric>

namespace {

using namespace vyerr;
using vykeltest::OwnedStatus;

/// Gives a record this document.
void setText(Status& status, const std::string& text) {
    ASSERT_TRUE(status.reallocate(&status, static_cast<std::uint32_t>(text.size() + 2)));
    ASSERT_NE(layStatusText(status.json, status.capacity, text.c_str()), nullptr);
}

TEST(Status, TheFirstErrorWins) {
    for (const std::int32_t current : {0, 3, -3}) {
        for (const std::int32_t offered : {0, 5, -5}) {
            const bool stored = offered != 0 && (current == 0 || (current == 3 && offered == -5));
            OwnedStatus status(current), into(current), from(offered);
            setText(status, "{\"a\":1}");
            StatusBlock block = vykel::makeStatusBlock();
            block.code = current;
            EXPECT_EQ(setStatusCode(&status, offered), stored);
            EXPECT_EQ(mergeStatus(&into, &from), stored);
            EXPECT_EQ(setStatusBlock(&block, offered, "c", "f", 1), stored);
            for (const std::int32_t code : {status.code, into.code, block.code})
                EXPECT_EQ(code, stored ? offered : current);
            EXPECT_STREQ(status.json, stored ? "{}" : "{\"a\":1}");
            EXPECT_EQ(block.line, stored ? 1u : 0u);
        }
    }
}

TEST(Status, MergingMovesTheText) {
    OwnedStatus into(1);
    OwnedStatus from(4); // a warning gives way
    setText(into, "{\"old\":1}");
    setText(from, "{\"warning\":1}");
    for (const char* const constantName : {"c", "second"}) // the first error wins
        recordError(&from, -7, constantName, "dir/f", -32);
    const char* const text = from.json;
    EXPECT_STREQ(text, R"({"error_constant":"c","file":"dir/f","line":-32,"component":"vykeldevenum"})");
    EXPECT_TRUE(mergeStatus(&into, &from));
    EXPECT_EQ(into.json, text);
    EXPECT_EQ(into.capacity - from.capacity, 512u);
    EXPECT_EQ(from.code, -7);
    EXPECT_EQ(from.json, nullptr);

    OwnedStatus other; // with another owner of memory the text is copied
    other.reallocate = [](Status* status, std::uint32_t n) { return defaultStatusReallocate(status, n); };
    EXPECT_TRUE(mergeStatus(&other, &into));
    EXPECT_STREQ(other.json, into.json);
    EXPECT_NE(other.json, into.json);
}

TEST(Status, AnErrorIsKeptAlsoWhereItsTextFindsNoRoom) {
    const StatusReallocateFn refuse = [](Status*, std::uint32_t) { return false; };
    const StatusReallocateFn grow = [](Status* own, std::uint32_t n) {
        return defaultStatusReallocate(own, n);
    };
    for (const bool refuses : {true, false}) {
        OwnedStatus status, from(-7);
        status.json = static_cast<char*>(std::calloc(status.capacity = 3, 1)); // of a plug-in's own record
        status.reallocate = refuses ? refuse : grow;
        EXPECT_TRUE(setStatusCode(&status, 3));
        EXPECT_STREQ(status.json, refuses ? "" : "{}");
        EXPECT_TRUE(mergeStatus(&status, &from)); // which has no text
        EXPECT_EQ(status.code, -7);
        EXPECT_STREQ(status.json, refuses ? "" : "{}");
        status.reallocate = defaultStatusReallocate;
    }
}

TEST(StatusBlock, TakesWhatItHasRoomForAndKeepsBothEndsOfALongPath) {
    for (const std::size_t length : {0u, 99u, 100u, 101u, 150u}) {
        std::string file(length, ' ');
        std::iota(file.begin(), file.end(), '!');
        const std::string shown = length <= 100 ? file : file.substr(0, 49) + ".." + file.substr(length - 49);
        for (const std::uint32_t size : {8u, 207u, 208u, 300u}) {
            StatusBlock block;
            std::memset(&block, 'G', sizeof block);
            block.structSize = size;
            block.code = 0;
            StatusBlock expected = block;
            expected.code = -1; // all that a smaller block has room for
            if (size >= sizeof block) {
                std::strncpy(expected.component, "vykeldeve", sizeof expected.component);
                std::memset(expected.file, 0, sizeof expected.file);
                shown.copy(expected.file, sizeof expected.file);
                expected.line = 7;
                expected.reserved = 0;
            }
            setStatusBlock(&block, -1, "vykeldevenum", file.c_str(), 7);
            EXPECT_EQ(std::memcmp(&block, &expected, sizeof block), 0) << length << ", " << size;
        }
    }
}

} // namespace
