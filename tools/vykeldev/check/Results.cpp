#include "check/Results.h"

#include "system/DisplayText.h"
#include <iomanip>
#include <ostream>

namespace vykeldev::check {
namespace {

/// The worst that was found.
Outcome overall(const Results& results) {
    for (const Outcome outcome : {Outcome::Failed, Outcome::Warning})
        if (countOf(results, outcome) != 0)
            return outcome;
    return Outcome::Passed;
}

} // namespace

// Makes a document of a vector of results, too.
void to_json(Json& json, const Result& result) {
    const Rule& rule = *result.rule;
    const bool isTried = result.remedy.empty();
    json = {{"id", rule.id},
            {"title", rule.title},
            {"severity", nameOf(rule.severity)},
            {"alters", rule.alters()},
            {"result", toString(result.outcome)},
            {"observed", textOrNull(result.observed)},
            {"meaning", isTried ? rule.meaning : "Nobody knows whether the plug-in keeps this rule."},
            {"remedy", isTried ? typeable(rule.remedy) : result.remedy},
            {"lookedLess", result.wasCutShort},
            {"milliseconds", result.duration.count()}};
}

void printResult(std::ostream& out, const Result& result, bool colour) {
    static constexpr const char* colours[] = {"\x1b[32m", "\x1b[1;33m", "\x1b[1;31m", "\x1b[2m"};
    const Rule& rule = *result.rule;
    if (result.cause != nullptr)
        return; // the summary has one line for all of them
    const std::string observed = printable(result.observed);
    out << (colour ? colours[static_cast<std::size_t>(result.outcome)] : "") << std::left << std::setw(8)
        << toString(result.outcome) << (colour ? "\x1b[0m" : "") << ' ' << std::setw(21) << rule.id
        << (result.outcome == Outcome::Skipped ? observed : rule.title) << '\n';
    if (result.wasCutShort)
        out << "         looked less often, because the time was over\n";
    if (isBroken(result.outcome)) {
        const Json json = result;
        out << "         observed:   " << observed << '\n'
            << "         meaning:    " << json["meaning"].get<std::string>() << '\n'
            << "         what to do: " << printable(json["remedy"].get<std::string>()) << '\n';
    }
    out.flush();
}

void printSummary(std::ostream& out, const Results& results) {
    for (const Result& cause : results) {
        const auto skipped = std::count_if(results.begin(), results.end(), [&cause](const Result& result) {
            return result.cause == cause.rule;
        });
        if (skipped != 0)
            out << "skipped  " << std::left << std::setw(21)
                << concat(skipped, skipped == 1 ? " rule" : " rules") << "because '" << cause.rule->id << "' "
                << (cause.outcome == Outcome::Skipped ? "was skipped" : "did not pass") << '\n';
    }
    out << countOf(results, Outcome::Passed) << " passed, " << countOf(results, Outcome::Failed)
        << " failed, " << countOf(results, Outcome::Warning) << " with warnings, "
        << countOf(results, Outcome::Skipped) << " skipped\n";
}

Json toDocument(const std::string& plugin, const Results& results) {
    Json document = {{"plugin", plugin}, {"result", toString(overall(results))}};
    for (const Outcome outcome : {Outcome::Passed, Outcome::Warning, Outcome::Failed, Outcome::Skipped})
        document["summary"][toString(outcome)] = countOf(results, outcome);
    document["rules"] = results;
    return document;
}

} // namespace vykeldev::check
