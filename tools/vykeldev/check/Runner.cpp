#include "check/Runner.h"

#include "check/Child.h"
#include "ChildProcess.h"
#include <map>
#include <nlohmann/json.hpp>

namespace vykeldev::check {
namespace {

using Incidents = std::map<std::string, std::vector<std::string>>; // by rule

/// What a child told of its rule.
struct Account {
    std::string calling; ///< What it was doing last.
    std::optional<Outcome> outcome;
    std::string observed;
};

void take(const std::string& line, const Rule& rule, Account& account, Incidents& incidents) {
    const nlohmann::json entry = nlohmann::json::parse(line, nullptr, false);
    if (!entry.is_object())
        return; // the plug-in prints, too
    account.calling = entry.value("calling", account.calling);
    const std::string broken = entry.value("incident", "");
    if (!broken.empty()) {
        const std::string where = broken == rule.id ? "" : " (seen in rule '" + std::string(rule.id) + "')";
        incidents[broken].push_back(entry.value("observed", "") + where);
    }
    if (const auto outcome = outcomeOf(entry.value("outcome", ""))) {
        account.outcome = outcome;
        account.observed = entry.value("observed", "");
    }
}

std::string endText(const ChildOutcome& child) {
    switch (child.end) {
    case ChildOutcome::End::TimedOut:
        return "it was still running after " + std::to_string(child.duration.count()) + " ms";
    case ChildOutcome::End::Crashed:
        return "it crashed with " + crashText(child.code);
    case ChildOutcome::End::Exited:
        break;
    }
    return "it ended the process with exit code " + std::to_string(child.code);
}

Result runInChild(const RunOptions& options, const Rule& rule, Incidents& incidents) {
    Account account;
    const ChildOutcome child =
        runChild(checkRuleArguments(rule.id, options.path), options.limit,
                 [&](const std::string& line) { take(line, rule, account, incidents); });
    if (account.outcome)
        return {&rule, *account.outcome, account.observed, child.duration};
    const std::string where = account.calling.empty() ? "" : " in: " + account.calling;
    const char* const lost = rule.alters ? "; what it changed may not have been put back" : "";
    return {&rule, Outcome::Failed, endText(child) + where + lost, child.duration};
}

const Result* resultOf(const Results& results, std::string_view id) {
    const auto found = std::find_if(results.begin(), results.end(),
                                    [id](const Result& result) { return result.rule->id == id; });
    return found == results.end() ? nullptr : &*found;
}

/// Why a rule need not be run at all; empty when it must.
std::string reasonToSkip(const RunOptions& options, const Rule& rule, const Results& results) {
    if (options.readOnly && rule.alters)
        return "left out by --read-only";
    const Result* const needed = resultOf(results, rule.needs);
    if (needed == nullptr || needed->outcome == Outcome::Passed)
        return "";
    if (needed->outcome == Outcome::Skipped)
        return needed->observed;
    return "it needs '" + std::string(rule.needs) + "', which did not pass";
}

Result runRule(const RunOptions& options, const Rule& rule, const Results& results, Incidents& incidents) {
    const std::string reason = reasonToSkip(options, rule, results);
    Result result =
        reason.empty() ? runInChild(options, rule, incidents) : Result{&rule, Outcome::Skipped, reason, {}};
    const auto& broken = incidents[rule.id];
    if (broken.empty())
        return result;
    const std::size_t more = broken.size() - 1;
    result.outcome = Outcome::Failed;
    result.observed = broken.front() + (more == 0 ? "" : ", and " + std::to_string(more) + " more");
    return result;
}

/// True when the rule is one of those, or one of them needs it.
bool isWanted(const Rule& rule, const std::vector<std::string>& wanted) {
    for (const std::string& id : wanted) {
        for (const Rule* other = findRule(id); other != nullptr; other = findRule(other->needs)) {
            if (other == &rule)
                return true;
        }
    }
    return wanted.empty();
}

} // namespace

Results runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult) {
    Results results;
    Incidents incidents;
    for (const Rule& rule : allRules()) {
        if (!isWanted(rule, options.rules))
            continue;
        results.push_back(runRule(options, rule, results, incidents));
        onResult(results.back());
    }
    return results;
}

} // namespace vykeldev::check
