#ifndef VYKELDEV_CHECK_RESULTS_H
#define VYKELDEV_CHECK_RESULTS_H

#include "check/Rule.h"
#include "output/Json.h"
#include <algorithm>
#include <chrono>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace vykeldev::check {

/// The names in reports.
constexpr const char* outcomeNames[] = {"passed", "warning", "failed", "skipped"};

constexpr const char* toString(Outcome outcome) noexcept {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

constexpr bool isBroken(Outcome outcome) noexcept {
    return outcome == Outcome::Failed || outcome == Outcome::Warning;
}

/// What came out of one rule.
struct Result : Verdict {
    const Rule* rule = nullptr;
    /// The rule because of whose result it was skipped; null when it was not, or for another reason.
    const Rule* cause = nullptr;
    std::chrono::milliseconds duration{0};
    bool wasCutShort = false; ///< Its time for repeating was over before it had looked as often as usual.
    std::vector<std::string> notes = {}; ///< For the next stage.
    bool putBack = false;                ///< What was altered is as it was before.
    /// The rules that turned out to be broken meanwhile, perhaps others, each with what was observed.
    std::vector<std::pair<std::string, std::string>> incidents = {};
};

using Results = std::vector<Result>;

inline std::size_t countOf(const Results& results, Outcome outcome) {
    return static_cast<std::size_t>(
        std::count_if(results.begin(), results.end(),
                      [outcome](const Result& result) { return result.outcome == outcome; }));
}

/// One result for people, with meaning and remedy when the rule is broken, or why it was skipped. Nothing
/// for a consequence of another result.
void printResult(std::ostream& out, const Result& result, bool colour);

/// The last lines: what was skipped because of which rule, and how many there are of each outcome.
void printSummary(std::ostream& out, const Results& results);

/// All results as one JSON object; schemas/check.schema.json describes it.
Json toDocument(const std::string& plugin, const Results& results);

} // namespace vykeldev::check

#endif
