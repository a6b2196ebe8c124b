#include "watch/DeviceChanges.h"
#include <gtest/gtest.h>

namespace vykeldev {

/// States and changes as short texts: "token number alias", a missing alias being "-".
static std::vector<DeviceState> states(const std::vector<std::vector<std::string>>& rows) {
    std::vector<DeviceState> result;
    for (const auto& row : rows) {
        DeviceState state{row[0], static_cast<std::uint32_t>(std::stoul(row[1])), std::nullopt};
        if (row.size() > 2)
            state.alias = row[2];
        result.push_back(state);
    }
    return result;
}

static std::string describe(const std::vector<DeviceChange>& changes) {
    std::string text;
    for (const DeviceChange& change : changes) {
        text += "+-#="[static_cast<std::size_t>(change.kind)] + change.now.token +
                std::to_string(change.before.number) + std::to_string(change.now.number) +
                change.before.alias.value_or("-") + change.now.alias.value_or("-") + ' ';
    }
    return text;
}

TEST(DeviceChanges, TellsWhatHappened) {
    using Rows = std::vector<std::vector<std::string>>;
    const struct {
        const char* what;
        Rows before;
        Rows now;
        const char* expected; // + added, - removed, # renumbered, = renamed
    } cases[] = {
        {"nothing", {{"a", "1"}, {"b", "2", "x"}}, {{"a", "1"}, {"b", "2", "x"}}, ""},
        {"another order is no change", {{"a", "1"}, {"b", "2"}}, {{"b", "2"}, {"a", "1"}}, ""},
        {"added, in the order of the list", {}, {{"b", "2"}, {"a", "1", "x"}}, "+b22-- +a11xx "},
        {"removed come first", {{"a", "1"}, {"b", "2"}}, {{"c", "3"}}, "-a11-- -b22-- +c33-- "},
        {"renumbered and renamed at once", {{"a", "1", "x"}}, {{"a", "2", "y"}}, "#a12xy =a12xy "},
        {"an empty alias is not a missing one", {{"a", "1", ""}}, {{"a", "1"}}, "=a11- "},
        {"equal tokens: by their order",
         {{"a", "1"}, {"a", "2"}, {"a", "3"}},
         {{"a", "1"}, {"a", "3"}},
         "-a33-- #a23-- "},
    };
    for (const auto& each : cases)
        EXPECT_EQ(describe(compareStates(states(each.before), states(each.now))), each.expected) << each.what;
}

} // namespace vykeldev
