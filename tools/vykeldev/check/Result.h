#ifndef VYKELDEV_CHECK_RESULT_H
#define VYKELDEV_CHECK_RESULT_H

#include "check/Rules.h"
#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace vykeldev::check {

/// What came out of a rule. A warning: it is broken, but the library copes with that, or it may be intended.
enum class Outcome { Passed, Warning, Failed, Skipped };

/// The names in reports.
constexpr const char* outcomeNames[] = {"passed", "warning", "failed", "skipped"};

constexpr const char* toString(Outcome outcome) noexcept {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

constexpr bool isBroken(Outcome outcome) noexcept {
    return outcome == Outcome::Failed || outcome == Outcome::Warning;
}

/// What came out of one rule.
struct Result {
    const Rule* rule = nullptr;
    Outcome outcome = Outcome::Passed;
    std::string observed; ///< What broke the rule, or why it was skipped.
    std::chrono::milliseconds duration{0};
    /// The rule because of whose result it was skipped; null when it was not, or for another reason.
    const Rule* cause = nullptr;
    bool lookedLess = false; ///< Its time for repeating was over before it had looked as often as usual.
};

using Results = std::vector<Result>;

inline std::size_t countOf(const Results& results, Outcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(results.begin(), results.end(),
                      [outcome](const Result& result) { return result.outcome == outcome; }));
}

} // namespace vykeldev::check

#endif
