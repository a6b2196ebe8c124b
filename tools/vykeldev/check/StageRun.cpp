#include "check/StageRun.h"

#include "child/ChildProcess.h"
#include <nlohmann/json.hpp>

namespace vykeldev::check {
namespace {

using Json = nlohmann::json;

constexpr std::uint32_t foreignException = 0xE06D7363; // of the Microsoft compiler

/// Takes what a process tells, line by line.
class Listener {
public:
    Listener(const std::string& mark, Account& account) : mark_(mark), account_(account) {}

    /// True when the process told something.
    bool take(const std::string& line) {
        if (line.compare(0, mark_.size(), mark_) != 0)
            return false; // the plug-in prints, too
        try {
            takeEntry(Json::parse(line.substr(mark_.size())));
            return true;
        } catch (const Json::exception&) { // it printed into this line
            return false;
        }
    }

    /// Where the last words were spoken.
    std::string place() const { return calling_.empty() ? "" : " in: " + calling_; }
    const std::string& calling() const noexcept { return calling_; }

private:
    void takeEntry(const Json& entry) {
        calling_ = entry.value("calling", calling_);
        account_.notes = entry.value("notes", account_.notes);
        account_.putBack = entry.value("putBack", account_.putBack);
        account_.toolFailed = entry.value("toolFailed", account_.toolFailed);
        const auto observed = entry.value("observed", std::string());
        if (const auto rule = entry.value("incident", std::string()); !rule.empty())
            account_.incidents.push_back({rule, observed});
        if (const auto outcome = outcomeOf(entry.value("outcome", std::string()))) {
            account_.outcome = outcome;
            account_.observed = observed;
        }
    }

    const std::string& mark_;
    Account& account_;
    std::string calling_;
};

/// What happened to a process that told no outcome.
std::string endText(const ChildOutcome& child, std::chrono::milliseconds limit) {
    switch (child.end) {
    case ChildOutcome::End::TimedOut:
        return "it made no progress for " + std::to_string(limit.count()) + " ms";
    case ChildOutcome::End::Crashed:
        return "it crashed with " + crashText(child.code);
    case ChildOutcome::End::Exited:
        break;
    }
    return "it ended the process with exit code " + std::to_string(child.code);
}

} // namespace

Account runStage(const ChildTask& task, std::chrono::milliseconds limit) {
    Account account;
    Listener listener(task.mark, account);
    const ChildOutcome child = runChildWhileItProgresses(
        childArguments(task), limit, [&](const std::string& line) { return listener.take(line); });
    account.duration = child.duration;
    if (account.outcome || !account.toolFailed.empty())
        return account;
    account.outcome = Outcome::Failed;
    account.observed = endText(child, limit) + listener.place();
    if (child.end == ChildOutcome::End::Crashed && child.code == foreignException) {
        account.incidents.push_back(
            {"no-exception", "an exception left " + listener.calling() + " and ended the process"});
        account.outcome = Outcome::Skipped;
        account.observed = "an exception ended the process; see 'no-exception'";
    }
    return account;
}

} // namespace vykeldev::check
