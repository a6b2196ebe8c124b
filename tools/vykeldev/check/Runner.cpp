#include "check/Runner.h"

#include "check/MachineLock.h"
#include "check/StageRun.h"
#include "platform/StopRequest.h"
#include "support/Failure.h"
#include <map>
#include <random>

namespace vykeldev::check {
namespace {

/// Rules that any other may find broken. They are told last.
constexpr std::string_view watched[] = {"status-guard", "no-exception"};

bool isWatched(const Rule& rule) noexcept {
    return std::find(std::begin(watched), std::end(watched), rule.id) != std::end(watched);
}

bool isBroken(Outcome outcome) noexcept {
    return outcome == Outcome::Failed || outcome == Outcome::Warning;
}

std::string randomMark() {
    std::random_device random;
    return "vykeldev-" + std::to_string(random()) + std::to_string(random()) + ":";
}

/// True when the rule is one of those, or one of them needs it.
bool isWanted(const Rule& rule, const std::vector<std::string>& wanted) {
    for (const std::string& id : wanted) {
        for (const Rule* other = findRule(id); other != nullptr; other = findRule(other->needs))
            if (other == &rule)
                return true;
    }
    return wanted.empty();
}

/// One run over the rules.
class Run {
public:
    explicit Run(const RunOptions& options) : options_(options) {}

    /// Checks a rule, unless there is a reason to skip it. Throws Failure when that cannot be done.
    const Result& add(const Rule& rule) {
        const std::string reason = reasonToSkip(rule);
        results_.push_back(reason.empty() ? check(rule) : Result{&rule, Outcome::Skipped, reason, {}});
        return results_.back();
    }

    /// The result of a watched rule with all that was seen of it; null when it was neither wanted nor broken.
    const Result* finish(const Rule& rule);

    bool isStopped() const noexcept { return stopped_; }

    RunResults take() { return {std::move(results_), stopped_}; }

private:
    std::string reasonToSkip(const Rule& rule) const;
    Result check(const Rule& rule);
    Account runOnce(const Rule& rule, Stage stage, const std::vector<std::string>& notes);
    void runSecond(const Rule& rule, Account& first);

    const Result* resultOf(std::string_view id) const {
        const auto found = std::find_if(results_.begin(), results_.end(),
                                        [id](const Result& result) { return result.rule->id == id; });
        return found == results_.end() ? nullptr : &*found;
    }

    const RunOptions& options_;
    const std::string mark_ = randomMark();
    Results results_;
    bool stopped_ = false;
    std::map<std::string, std::vector<std::string>> incidents_; // by rule
};

std::string Run::reasonToSkip(const Rule& rule) const {
    if (options_.readOnly && rule.alters())
        return "left out by --read-only";
    const Result* const needed = resultOf(rule.needs);
    if (needed == nullptr || needed->outcome == Outcome::Passed)
        return "";
    if (needed->outcome == Outcome::Skipped)
        return needed->observed;
    return "it needs '" + std::string(rule.needs) + "', which did not pass";
}

Result Run::check(const Rule& rule) {
    try {
        std::optional<MachineLock> lock;
        std::optional<StopRequest> stopRequest;
        if (rule.alters()) {
            lock.emplace(rule.lock);
            stopRequest.emplace();
        }
        Account account = runOnce(rule, Stage::First, {});
        if (!account.notes.empty() && (rule.alters() || account.outcome == Outcome::Passed))
            runSecond(rule, account);
        stopped_ = stopRequest && stopRequest->waitFor(std::chrono::milliseconds(0));
        if (!account.toolFailed.empty())
            throw Failure("the rule '" + std::string(rule.id) + "' cannot be checked: " + account.toolFailed,
                          "This tool failed, not the plug-in.", "Leave it out with --rule, and report it.");
        return {&rule, *account.outcome, account.observed, account.duration};
    } catch (const Skipped& skipped) {
        return {&rule, Outcome::Skipped, skipped.reason, {}};
    }
}

Account Run::runOnce(const Rule& rule, Stage stage, const std::vector<std::string>& notes) {
    Account account = runStage({mark_, rule.id, options_.path, stage, notes}, options_.limit);
    for (const Incident& incident : account.incidents) {
        const std::string where =
            incident.rule == rule.id ? "" : " (seen in rule '" + std::string(rule.id) + "')";
        incidents_[incident.rule].push_back(incident.observed + where);
    }
    return account;
}

/// Runs the second process and adds to the first account what came out.
void Run::runSecond(const Rule& rule, Account& first) {
    const bool passed = first.outcome == Outcome::Passed;
    Account second;
    try {
        second = runOnce(rule, passed ? Stage::Second : Stage::PutBack, first.notes);
    } catch (const Failure& failure) {
        second.toolFailed = failure.what();
    }
    first.duration += second.duration;
    if (first.toolFailed.empty())
        first.toolFailed = second.toolFailed;
    const Outcome outcome = second.outcome.value_or(Outcome::Failed);
    if (passed) {
        first.outcome = outcome;
        first.observed = second.observed;
    } else if (isBroken(outcome)) {
        first.observed += "; then, in a new process, " + second.observed;
    }
    if (!rule.alters() || second.putBack)
        return;
    const std::string lost = "the old one of the device " + first.notes.at(0) + ", '" + first.notes.at(1) +
                             "', could not be put back";
    first.observed += (first.observed.empty() ? "" : "; ") + lost;
    if (!first.toolFailed.empty())
        first.toolFailed += "; " + lost;
    if (first.outcome == Outcome::Passed)
        first.outcome = Outcome::Failed;
    else if (first.outcome == Outcome::Skipped)
        first.outcome = Outcome::Warning;
}

const Result* Run::finish(const Rule& rule) {
    const auto& broken = incidents_[rule.id];
    const auto known = std::find_if(results_.begin(), results_.end(),
                                    [&](const Result& result) { return result.rule == &rule; });
    if (broken.empty())
        return known == results_.end() ? nullptr : &*known;
    Result& result = known == results_.end() ? results_.emplace_back(Result{&rule, {}, {}, {}}) : *known;
    const std::size_t more = broken.size() - 1;
    result.outcome = Outcome::Failed;
    result.observed = broken.front() + (more == 0 ? "" : ", and " + std::to_string(more) + " more");
    return &result;
}

} // namespace

RunResults runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult) {
    Run run(options);
    for (const Rule& rule : allRules()) {
        if (run.isStopped())
            break;
        if (!isWanted(rule, options.rules))
            continue;
        const Result& result = run.add(rule);
        if (!isWatched(rule))
            onResult(result);
    }
    for (const std::string_view id : watched)
        if (const Result* const result = run.finish(*findRule(id)))
            onResult(*result);
    return run.take();
}

} // namespace vykeldev::check
