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
            const std::int32_t expected = stored ? offered : current;
            OwnedStatus status(current);
            setText(status, "{\"a\":1}");
            EXPECT_EQ(setStatusCode(&status, offered), stored);
            EXPECT_EQ(status.code, expected);
            EXPECT_STREQ(status.json, stored ? "{}" : "{\"a\":1}");

            OwnedStatus into(current);
            OwnedStatus from(offered);
            EXPECT_EQ(mergeStatus(&into, &from), stored);
            EXPECT_EQ(into.code, expected);

            StatusBlock block = vykel::makeStatusBlock();
            block.code = current;
            EXPECT_EQ(setStatusBlock(&block, offered, "c", "f", 1), stored);
            EXPECT_EQ(block.code, expected);
            EXPECT_EQ(block.line, stored ? 1u : 0u);
        }
    }
}

TEST(Status, DoublesItsBuffer) {
    for (const std::uint32_t wanted : {4u, 512u, 513u, 1024u, 1025u}) {
        OwnedStatus status;
        EXPECT_TRUE(status.reallocate(&status, wanted));
        EXPECT_FALSE(status.reallocate(&status, 0x80000000u));
        EXPECT_TRUE(status.reallocate(&status, 4)); // there is enough
        EXPECT_EQ(status.capacity, wanted <= 512 ? 512u : wanted <= 1024 ? 1024u : 2048u) << wanted;
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
    for (const bool refuses : {true, false}) {
        OwnedStatus status, from(-7);
        status.json = static_cast<char*>(std::calloc(status.capacity = 3, 1)); // of a plug-in's own record
        if (refuses)
            status.reallocate = [](Status*, std::uint32_t) { return false; };
        else
            status.reallocate = [](Status* own, std::uint32_t n) { return defaultStatusReallocate(own, n); };
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

TEST(StatusBlock, TakesTheEndsOfWhatTheDocumentSays) {
    const auto block = [](const std::string& document, std::int32_t code = -9) {
        OwnedStatus status(code);
        setText(status, document);
        StatusBlock taken = vykel::makeStatusBlock();
        EXPECT_TRUE(statusToBlock(&status, &taken));
        EXPECT_EQ(taken.code, code);
        return std::string(taken.component) + ' ' + taken.file + ' ' + std::to_string(taken.line);
    };
    const char* const whole = R"({"component":"vykeldevenum","file":"a\\b","line":47})";
    EXPECT_EQ(block(whole), "eldevenum a\\b 47");
    EXPECT_EQ(block(whole, 0), "  0");
    const std::string hundred(100, 'p');
    EXPECT_EQ(block("{\"line\": 47.9,\"file\":\"start/" + hundred + "\",\"component\":\"\"}"),
              ' ' + hundred + " 47");
    EXPECT_EQ(block(R"({"line":"47","component":5,"file":[]})"), "  0");
    EXPECT_EQ(block("{\"line\":47,"), "  47");
}

} // namespace
