// The fuzz target json adds fields of every kind to any document.
#include "errors/ErrorInfoText.h"

#include "errors/ErrorInfo.h"
#include "support/OwnedStatus.h"
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace vyerr;
using Add = std::function<char*(char*)>;

constexpr StatusTextGrowth noGrowth = {nullptr, nullptr};

Add addString(const char* key, const char* value) {
    return [=](char* at) { return addStringField(at, key, value, noGrowth); };
}

TEST(ErrorInfoText, InsertsAtTheCursorWhereThereIsRoom) {
    const Add field = addString("k", "v");
    const struct {
        const char* text;
        std::size_t cursor;
        Add add;
        std::string result; ///< with a bar at the new cursor
    } rows[] = {
        {"{}", 1, field, R"({"k":"v"|})"},
        {"{}", 0, field, R"({"k":"v"|})"},
        {"{ }", 2, field, R"({ "k":"v"|})"},
        {"{ }", 0, field, R"({"k":"v"| })"},
        {R"({"a":1})", 0, field, R"({"k":"v"|,"a":1})"},
        {"[1]", 2, addString(nullptr, "v"), R"([1,"v"|])"},
        {"{", 0, field, R"({"k":"v"|)"}, // a damaged document stays damaged
        {"[}", 1, addString(nullptr, "v"), R"([,"v"|})"},
        {"{}", 1, addString("\"", "\t\b\n\f\r\\\"\x01\x7f\xC3\xA9"),
         "{\"\\\"\":\"\\t\\b\\n\\f\\r\\\\\\\"\\u0001\\u007f\xC3\xA9\"|}"},
    };
    for (const auto& [text, place, add, result] : rows) {
        for (const std::size_t bytes : {result.size() + 1, result.size()}) { // enough, and one too few
            const std::unique_ptr<char[]> buffer(new char[bytes]); // where a sanitizer sees a byte too many
            EXPECT_EQ(layStatusText(buffer.get(), bytes, text), buffer.get() + std::strlen(text) - 1);
            const char* const cursor = add(buffer.get() + place);
            std::string after = buffer.get();
            if (cursor != nullptr)
                after.insert(static_cast<std::size_t>(cursor - buffer.get()), "|");
            EXPECT_EQ(after, bytes > result.size() ? result : text);
        }
        EXPECT_EQ(add(nullptr), nullptr);
    }
    char buffer[7] = "{}xxxx";
    EXPECT_EQ(layStatusText(buffer, 3, "[]"), nullptr);
    EXPECT_EQ(layStatusText(buffer, 6, nullptr), nullptr);
    EXPECT_EQ(layStatusText(buffer, 5, "{}"), buffer + 1);
    EXPECT_EQ(std::string(buffer, 6), std::string("{}\0\0Jx", 6));
    EXPECT_NE(layStatusText(buffer, 4, "{}"), nullptr);
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
    for (const std::uint32_t refused : {0u, 1u, (1u << 30) + 1, 0xFFFFFFFFu}) {
        status.capacity = refused;
        EXPECT_EQ(growStatusText(status.json, &status), nullptr) << refused;
    }
    status.json[0] = 'x'; // no document any more
    for (const std::uint32_t noDocument : {2u, 512u}) {
        status.capacity = noDocument;
        EXPECT_EQ(growStatusText(status.json, &status), nullptr);
    }
}

} // namespace
