#include "errors/Status.h"

#include "errors/ErrorInfo.h"
#include "errors/ErrorInfoText.h"
#include "errors/StatusBlocks.h"
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace vyerr {

namespace {

bool otherReallocate(Status* status, std::uint32_t wantedCapacity) {
    return defaultStatusReallocate(status, wantedCapacity);
}

struct OwnedStatus : Status {
    explicit OwnedStatus(std::int32_t initialCode = 0) {
        initStatus(this);
        code = initialCode;
    }
    ~OwnedStatus() { releaseStatus(this); }
};

/// A record with a document of our making.
void setText(Status& status, const std::string& text) {
    ASSERT_TRUE(status.reallocate(&status, static_cast<std::uint32_t>(text.size() + 2)));
    ASSERT_NE(layStatusText(status.json, status.capacity, text.c_str()), nullptr);
}

StatusBlock blockOf(const std::string& document, std::int32_t code) {
    OwnedStatus status(code);
    setText(status, document);
    StatusBlock block = vykel::makeStatusBlock();
    EXPECT_TRUE(statusToBlock(&status, &block));
    return block;
}

} // namespace

TEST(Status, TheFirstErrorWins) {
    const struct {
        std::int32_t current;
        std::int32_t offered;
        bool stored;
    } cases[] = {{0, 0, false}, {0, 5, true},    {0, -5, true},  {3, 5, false}, {3, 0, false},
                 {3, -5, true}, {-3, -5, false}, {-3, 5, false}, {-3, 0, false}};
    for (const auto& each : cases) {
        const std::int32_t expected = each.stored ? each.offered : each.current;
        OwnedStatus status(each.current);
        setText(status, "{\"a\":1}");
        EXPECT_EQ(setStatusCode(&status, each.offered), each.stored);
        EXPECT_EQ(status.code, expected);
        EXPECT_STREQ(status.json, each.stored ? "{}" : "{\"a\":1}");

        OwnedStatus into(each.current);
        OwnedStatus from(each.offered);
        EXPECT_EQ(mergeStatus(&into, &from), each.stored);
        EXPECT_EQ(into.code, expected);

        StatusBlock block = vykel::makeStatusBlock();
        block.code = each.current;
        EXPECT_EQ(setStatusBlock(&block, each.offered, "c", "f", 1), each.stored);
        EXPECT_EQ(block.code, expected);
        EXPECT_EQ(block.line, each.stored ? 1u : 0u);
    }
}

TEST(Status, RecordsFourFields) {
    OwnedStatus status(4); // a warning gives way
    recordError(&status, -52000, constant::memoryFull, "dir/unit.cpp", -32);
    EXPECT_EQ(status.code, -52000);
    EXPECT_EQ(status.capacity, 512u);
    const char* const expected =
        "{\"error_constant\":\"vyplaterr_memoryFull\",\"file\":\"dir/unit.cpp\",\"line\":-32,"
        "\"component\":\"vykeldevenum\"}";
    EXPECT_STREQ(status.json, expected);
    recordError(&status, -1, "second", "other", 2);
    EXPECT_EQ(status.code, -52000);
    EXPECT_STREQ(status.json, expected);
}

TEST(Status, MergingMovesTheText) {
    OwnedStatus into(1);
    OwnedStatus from;
    setText(into, "{\"old\":1}");
    recordError(&from, -7, "c", "f", 1);
    const char* const text = from.json;
    EXPECT_TRUE(mergeStatus(&into, &from));
    EXPECT_EQ(into.json, text);
    EXPECT_EQ(into.capacity, 512u);
    EXPECT_EQ(from.code, -7);
    EXPECT_EQ(from.json, nullptr);
    EXPECT_EQ(from.capacity, 0u);

    OwnedStatus other; // with another owner of memory the text is copied
    other.reallocate = otherReallocate;
    EXPECT_TRUE(mergeStatus(&other, &into));
    EXPECT_STREQ(other.json, into.json);
    EXPECT_NE(other.json, into.json);
}

TEST(StatusBlock, KeepsBothEndsOfALongPath) {
    for (const std::size_t length : {0u, 99u, 100u, 101u, 150u}) {
        std::string file;
        for (std::size_t i = 0; i < length; ++i)
            file += static_cast<char>('!' + i % 90);
        const std::string expected =
            length <= 100 ? file : file.substr(0, 49) + ".." + file.substr(length - 49);
        StatusBlock block;
        std::memset(&block, 'G', sizeof block);
        block.structSize = sizeof block;
        block.code = 0;
        setStatusBlock(&block, -1, "vykeldevenum", file.c_str(), 7);
        EXPECT_STREQ(block.component, "vykeldeve");
        EXPECT_EQ(block.file, expected);
        const std::string padding(block.file + expected.size(), sizeof block.file - expected.size());
        EXPECT_EQ(padding, std::string(padding.size(), '\0'));
        EXPECT_EQ(block.padding1[0], 'G');
    }
}

TEST(StatusBlock, TakesTheEndsOfWhatTheDocumentSays) {
    const std::string path = "start/" + std::string(100, 'p');
    const struct {
        std::string document;
        const char* component;
        std::string file;
        std::uint32_t line;
    } cases[] = {
        {"{\"component\":\"vykeldevenum\",\"file\":\"a\\\\b\",\"line\":47}", "eldevenum", "a\\b", 47},
        {"{\"line\": 47.9,\"file\":\"" + path + "\",\"component\":\"\"}", "", path.substr(6), 47},
        {"{\"line\":\"47\",\"component\":5,\"file\":[]}", "", "", 0},
        {"{}", "", "", 0},
        {"{\"line\":47,", "", "", 47},
    };
    for (const auto& each : cases) {
        const StatusBlock block = blockOf(each.document, -9);
        EXPECT_EQ(block.code, -9);
        EXPECT_STREQ(block.component, each.component) << each.document;
        EXPECT_EQ(block.file, each.file) << each.document;
        EXPECT_EQ(block.line, each.line) << each.document;
    }
    EXPECT_EQ(blockOf(cases[0].document, 0).line, 0u);
}

} // namespace vyerr
