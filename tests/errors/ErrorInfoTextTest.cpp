#include "errors/ErrorInfoText.h"

#include "errors/ErrorInfo.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vyerr {

namespace {

constexpr StatusTextGrowth noGrowth = {nullptr, nullptr};

/// A buffer of an exact size on the heap, where a sanitizer sees every byte too many.
struct Buffer {
    Buffer(const char* text, std::size_t bytes) : size(bytes), data(new char[bytes]) {
        EXPECT_NE(layStatusText(data.get(), size, text), nullptr);
    }
    std::size_t size;
    std::unique_ptr<char[]> data;
};

} // namespace

TEST(ErrorInfoText, LaysATextOnlyWhereItFits) {
    char buffer[8];
    std::memset(buffer, 'x', sizeof buffer);
    EXPECT_EQ(layStatusText(buffer, 3, "{}"), nullptr);
    EXPECT_EQ(std::string(buffer, sizeof buffer), "xxxxxxxx");
    EXPECT_EQ(layStatusText(buffer, 4, "{}"), buffer + 1);
    EXPECT_EQ(std::string(buffer, 5), std::string("{}\0Jx", 5));
    EXPECT_EQ(layStatusText(buffer, 8, nullptr), buffer + 1);
    EXPECT_EQ(std::string(buffer, 8), std::string("{}\0\0\0\0\0J", 8));
    EXPECT_EQ(layStatusText(buffer, 3, nullptr), nullptr);
}

TEST(ErrorInfoText, InsertsAtTheCursor) {
    using Add = std::function<char*(char*)>;
    const auto string = [](const char* key, const char* value) -> Add {
        return [=](char* cursor) { return addStringField(cursor, key, value, noGrowth); };
    };
    const struct {
        const char* text;
        int cursor;
        Add add;
        const char* result; // with a bar where the new cursor is
    } cases[] = {
        {"{}", 1, string("k", "v"), "{\"k\":\"v\"|}"},
        {"{}", 0, string("k", "v"), "{\"k\":\"v\"|}"},
        {"{ }", 2, string("k", "v"), "{ \"k\":\"v\"|}"},
        {"{\"a\":1}", 6, string("k", "v"), "{\"a\":1,\"k\":\"v\"|}"},
        {"{\"a\":1}", 0, string("k", "v"), "{\"k\":\"v\"|,\"a\":1}"},
        {"{\"a\":{}}", 6, string("k", "v"), "{\"a\":{\"k\":\"v\"|}}"},
        {"[1]", 2, string(nullptr, "v"), "[1,\"v\"|]"},
        {"[]", 1, string(nullptr, "v"), "[\"v\"|]"},
        {"{}", 1, string("\"", "\t\b\n\f\r\\\"\x01\x7f\xC3\xA9"),
         "{\"\\\"\":\"\\t\\b\\n\\f\\r\\\\\\\"\\u0001\\u007f\xC3\xA9\"|}"},
        {"{}", 1, [](char* at) { return addIntField(at, "i", INT32_MIN, noGrowth); }, "{\"i\":-2147483648|}"},
        {"{}", 1, [](char* at) { return addUIntField(at, "u", 4294967295u, noGrowth); },
         "{\"u\":4294967295|}"},
        {"{\"a\":1}", 6, [](char* at) { return addObjectField(at, "o", noGrowth); }, "{\"a\":1,\"o\":{}|}"},
    };
    for (const auto& each : cases) {
        std::string expected = each.result;
        const std::size_t bar = expected.find('|');
        expected.erase(bar, 1);
        Buffer buffer(each.text, expected.size() + 2); // just enough
        char* const cursor = each.add(buffer.data.get() + each.cursor);
        EXPECT_STREQ(buffer.data.get(), expected.c_str());
        EXPECT_EQ(cursor, buffer.data.get() + bar) << each.result;

        Buffer small(each.text, expected.size() + 1); // one byte short: all or nothing
        EXPECT_EQ(each.add(small.data.get() + each.cursor), nullptr);
        EXPECT_STREQ(small.data.get(), each.text);
        EXPECT_EQ(each.add(nullptr), nullptr);
    }
}

TEST(ErrorInfoText, GrowsByDoublingAndKeepsTheOffset) {
    for (const std::size_t spare : {0u, 1u, 600u, 5000u}) { // bytes beyond what 512 hold
        Status status;
        initStatus(&status);
        ErrorInfo info(status, -1, "c", {"f", 1});
        info.openObject("o");
        const std::string before = status.json;
        const std::string value(512 - 2 - before.size() - std::strlen("\"k\":\"\"") + spare, 'v');
        info.addString("k", value.c_str()).closeObject().addInt("n", 1);
        EXPECT_EQ(status.json, before.substr(0, before.size() - 2) + "\"k\":\"" + value + "\"},\"n\":1}");
        EXPECT_EQ(status.capacity, spare < 500 ? 1024u : spare < 1000 ? 2048u : 8192u);
        EXPECT_EQ(status.json[status.capacity - 1], 'J');
        releaseStatus(&status);
    }
}

TEST(ErrorInfoText, AGrowthThatFailsLeavesTheDocument) {
    Status status;
    initStatus(&status);
    ErrorInfo info(status, -1, "c", {"f", 1});
    const std::string before = status.json;
    status.reallocate = [](Status*, std::uint32_t) { return false; };
    info.addString("long", std::string(600, 'v').c_str()).addInt("short", 1);
    EXPECT_EQ(status.json, before);
    EXPECT_EQ(status.code, -1);
    status.reallocate = defaultStatusReallocate;
    const std::uint32_t capacity = status.capacity;
    for (const std::uint32_t refused : {0u, 1u, (1u << 30) + 1, 0xFFFFFFFFu}) {
        status.capacity = refused;
        EXPECT_EQ(growStatusText(status.json, &status), nullptr) << refused;
    }
    status.capacity = capacity;
    releaseStatus(&status);
}

} // namespace vyerr
