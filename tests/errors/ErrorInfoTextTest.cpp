// The fuzz target json adds fields of every kind to any document, and replays how it grows.
#include "errors/ErrorInfoText.h"

#include "errors/ErrorInfo.h"
#include "support/OwnedStatus.h"
#include <cstring>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace vyerr;

TEST(ErrorInfoText, InsertsWhereThereIsRoomAlsoIntoADamagedDocument) {
    constexpr StatusTextGrowth noGrowth = {nullptr, nullptr};
    const char* const rows[][2] = {{"{}", R"({"k":"v"})"},
                                   {R"({"a":1})", R"({"k":"v","a":1})"},
                                   {"{", R"({"k":"v")"},
                                   {"[}", R"(["k":"v",})"}};
    for (const auto& [text, result] : rows) {
        for (const std::size_t bytes : {std::strlen(result) + 2, std::strlen(result) + 1}) { // one too few
            const std::unique_ptr<char[]> buffer(new char[bytes]); // where a sanitizer sees a byte too many
            EXPECT_EQ(layStatusText(buffer.get(), bytes, text), buffer.get() + std::strlen(text) - 1);
            const bool fits = bytes == std::strlen(result) + 2;
            EXPECT_EQ(addStringField(buffer.get(), "k", "v", noGrowth), fits ? buffer.get() + 8 : nullptr);
            EXPECT_STREQ(buffer.get(), fits ? result : text);
        }
    }
    EXPECT_EQ(addStringField(nullptr, "k", "v", noGrowth), nullptr);
    char buffer[7] = "{}xxxx";
    EXPECT_EQ(layStatusText(buffer, 3, "[]"), nullptr);
    EXPECT_EQ(layStatusText(buffer, 6, nullptr), nullptr);
    EXPECT_EQ(layStatusText(buffer, 5, "{}"), buffer + 1);
    EXPECT_EQ(std::string(buffer, 6), std::string("{}\0\0Jx", 6));
    EXPECT_NE(layStatusText(buffer, 4, "{}"), nullptr);
}

TEST(ErrorInfoText, AGrowthThatFailsLeavesTheDocument) {
    vykeltest::OwnedStatus status;
    ErrorInfo info(status, -1, "c", {"f", 1});
    EXPECT_EQ(status.capacity, 512u);
    const std::string before = status.json;
    status.reallocate = [](Status*, std::uint32_t) { return false; };
    info.addString("long", std::string(600, 'v').c_str()).addInt("short", 1);
    EXPECT_EQ(status.json, before);
    status.reallocate = defaultStatusReallocate;
    EXPECT_FALSE(status.reallocate(&status, 0x80000000u));
    for (const std::uint32_t refused : {0u, 1u, (1u << 30) + 1, 0xFFFFFFFFu}) {
        status.capacity = refused;
        EXPECT_EQ(growStatusText(status.json, &status), nullptr) << refused;
    }
    status.json[0] = 'x'; // no document any more
    status.capacity = 2;
    EXPECT_EQ(growStatusText(status.json, &status), nullptr);
}

} // namespace
