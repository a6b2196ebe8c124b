#ifndef VYKELDEV_CHECK_RESULT_H
#define VYKELDEV_CHECK_RESULT_H

#include "check/Rule.h"
#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vykeldev::check {

enum class Outcome { Passed, Warning, Failed, Skipped };

/// As it is shown and stored.
constexpr std::array<const char*, 4> outcomeNames = {"passed", "warning", "failed", "skipped"};

constexpr const char* toString(Outcome outcome) noexcept {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

inline std::optional<Outcome> outcomeOf(std::string_view name) noexcept {
    const auto* const found = std::find(outcomeNames.begin(), outcomeNames.end(), name);
    if (found == outcomeNames.end())
        return std::nullopt;
    return static_cast<Outcome>(found - outcomeNames.begin());
}

/// How a plug-in stands to one rule.
struct Result {
    const Rule* rule = nullptr;
    Outcome outcome = Outcome::Passed;
    std::string observed; ///< What broke the rule, or why it was skipped.
    std::chrono::milliseconds duration{0};
};

using Results = std::vector<Result>;

inline std::size_t countOf(const Results& results, Outcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(results.begin(), results.end(),
                      [outcome](const Result& result) { return result.outcome == outcome; }));
}

} // namespace vykeldev::check

#endif
