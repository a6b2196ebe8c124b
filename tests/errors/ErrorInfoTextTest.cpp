#include "errors/ErrorInfoText.h"

#include "errors/ErrorInfo.h"
#include "support/OwnedStatus.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace vyerr {

namespace {

using Add = std::function<char*(char*)>;

constexpr StatusTextGrowth noGrowth = {nullptr, nullptr};

/// The text after a field was added at a place, with a bar at the new cursor. It has `bytes` bytes on the
/// heap, where a sanitizer sees every byte too many.
std::string added(const std::string& text, std::size_t place, std::size_t bytes, const Add& add) {
    const std::unique_ptr<char[]> buffer(new char[bytes]);
    EXPECT_EQ(layStatusText(buffer.get(), bytes, text.c_str()), buffer.get() + text.size() - 1);
    const char* const cursor = add(buffer.get() + place);
    EXPECT_EQ(add(nullptr), nullptr);
    std::string result = buffer.get();
    return cursor == nullptr ? result : result.insert(static_cast<std::size_t>(cursor - buffer.get()), "|");
}

} // namespace

TEST(ErrorInfoText, LaysATextOnlyWhereItFits) {
    char buffer[7] = "{}xxxx";
    EXPECT_EQ(layStatusText(buffer, 3, "[]"), nullptr);
    EXPECT_EQ(layStatusText(buffer, 6, nullptr), nullptr);
    EXPECT_EQ(layStatusText(buffer, 5, "{}"), buffer + 1);
    EXPECT_EQ(std::string(buffer, 6), std::string("{}\0\0Jx", 6));
}

TEST(ErrorInfoText, InsertsAtTheCursor) {
    /// `result` has a bar at the new cursor.
    const auto expect = [](const std::string& result, const char* text, std::size_t cursor, const Add& add) {
        const std::size_t enough = result.size() + 1; // without the bar, with NUL and end marker
        EXPECT_EQ(added(text, cursor, enough, add), result);
        EXPECT_EQ(added(text, cursor, enough - 1, add), text); // all or nothing
    };
    const Add field = [](char* at) { return addStringField(at, "k", "v", noGrowth); };
    const Add element = [](char* at) { return addStringField(at, nullptr, "v", noGrowth); };
    expect("{\"k\":\"v\"|}", "{}", 1, field);
    expect("{\"k\":\"v\"|}", "{}", 0, field);
    expect("{ \"k\":\"v\"|}", "{ }", 2, field);
    expect("{\"k\":\"v\"| }", "{ }", 0, field);
    expect("{\"a\":1,\"k\":\"v\"|}", "{\"a\":1}", 6, field);
    expect("{\"k\":\"v\"|,\"a\":1}", "{\"a\":1}", 0, field);
    expect("{\"a\":{\"k\":\"v\"|}}", "{\"a\":{}}", 6, field);
    expect("[1,\"v\"|]", "[1]", 2, element);
    expect("[\"v\"|]", "[]", 1, element);
    expect("{\"\\\"\":\"\\t\\b\\n\\f\\r\\\\\\\"\\u0001\\u007f\xC3\xA9\"|}", "{}", 1,
           [](char* at) { return addStringField(at, "\"", "\t\b\n\f\r\\\"\x01\x7f\xC3\xA9", noGrowth); });
    expect("{\"i\":-2147483648|}", "{}", 1,
           [](char* at) { return addIntField(at, "i", INT32_MIN, noGrowth); });
    expect("{\"u\":4294967295|}", "{}", 1,
           [](char* at) { return addUIntField(at, "u", UINT32_MAX, noGrowth); });
    expect("[{}|]", "[]", 1, [](char* at) { return addObjectField(at, nullptr, noGrowth); });
}

TEST(ErrorInfoText, GrowsByDoublingAndKeepsTheOffset) {
    for (const std::size_t spare : {0u, 1u, 600u}) { // bytes beyond what 512 hold
        vykeltest::OwnedStatus status;
        ErrorInfo info(status, -1, "c", {"f", 1});
        info.openObject("o");
        const std::string before = status.json;
        const std::string value(512 - 2 - before.size() - std::strlen("\"k\":\"\"") + spare, 'v');
        info.addString("k", value.c_str()).closeObject().addInt("n", 1);
        EXPECT_EQ(status.json, before.substr(0, before.size() - 2) + "\"k\":\"" + value + "\"},\"n\":1}");
        EXPECT_EQ(status.capacity, spare < 500 ? 1024u : 2048u);
        EXPECT_EQ(status.json[status.capacity - 1], 'J');
    }
}

TEST(ErrorInfoText, AGrowthThatFailsLeavesTheDocument) {
    vykeltest::OwnedStatus status;
    ErrorInfo info(status, -1, "c", {"f", 1});
    const std::string before = status.json;
    status.reallocate = [](Status*, std::uint32_t) { return false; };
    info.addString("long", std::string(600, 'v').c_str()).addInt("short", 1);
    EXPECT_EQ(status.json, before);
    status.reallocate = defaultStatusReallocate;
    const std::uint32_t capacity = status.capacity;
    for (const std::uint32_t refused : {0u, 1u, (1u << 30) + 1, 0xFFFFFFFFu}) {
        status.capacity = refused;
        EXPECT_EQ(growStatusText(status.json, &status), nullptr) << refused;
    }
    status.capacity = capacity;
    status.json[0] = 'x'; // no document any more
    EXPECT_EQ(growStatusText(status.json, &status), nullptr);
}

} // namespace vyerr
