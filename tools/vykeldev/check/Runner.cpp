#include "check/Runner.h"

#include "check/Rules.h"
#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "machine/Locks.h"
#include "output/Progress.h"
#include "pellumkelddk/user/FileLock.h"
#include "system/Console.h"
#include "system/Failure.h"
#include <map>

namespace vykeldev::check {
namespace {

/// Rules that the check of any other rule may find broken. Their results come last.
constexpr std::string_view watched[] = {"status-guard", "no-exception"};

bool isWatched(const Rule& rule) noexcept {
    return std::find(std::begin(watched), std::end(watched), rule.id) != std::end(watched);
}

/// True when the rule is one of those, or one of them needs it.
bool isWanted(const Rule& rule, const std::vector<std::string>& wanted) {
    for (const std::string& id : wanted)
        for (const Rule* other = findRule(id); other != nullptr; other = findRule(other->needs))
            if (other == &rule)
                return true;
    return wanted.empty();
}

/// Locks one of the machine's lock files as the library does, so that the library changes nothing meanwhile.
/// Waits for it, but not for long. Throws NotTried when it cannot be locked.
vykel::FileStream lockMachine(const std::string& fileName) {
    try {
        vykel::FileStream stream = vykel::openLockFile((vykel::getConfigurationFolder() + fileName).c_str());
        if (lockInTime(stream.get(), [](auto) {}) == ERROR_SUCCESS)
            return stream;
    } catch (const vyerr::Exception&) {
        throw NotTried("Run 'vykeldev doctor': it says why. Then check again.", "the machine's lock file ",
                       fileName, " cannot be opened or made");
    }
    throw NotTried("Close the programs that use the devices, or run 'vykeldev doctor', and check again.",
                   "the machine's lock file ", fileName, " is locked; another process may be using it");
}

/// One run over the rules.
class Run {
public:
    explicit Run(const RunOptions& runOptions) : options(runOptions), progress(!runOptions.quiet) {}

    /// Checks a rule, unless there is a reason to skip it. Throws Failure when that cannot be done.
    const Result& add(const Rule& rule) {
        progress.show(concat("checking '", rule.id, "'"));
        collected.results.push_back(check(rule));
        progress.show({});
        return collected.results.back();
    }

    /// The result of a watched rule with everything that was seen of it; null when it was neither wanted nor
    /// broken.
    const Result* finish(const Rule& rule) {
        const std::vector<std::string>& broken = incidents[rule.id];
        Result* result = resultOf(rule.id);
        if (broken.empty())
            return result;
        if (result == nullptr)
            result = &collected.results.emplace_back(Result{&rule});
        const std::size_t more = broken.size() - 1;
        result->outcome = Outcome::Failed;
        result->cause = nullptr;
        result->observed = broken.front() + (more == 0 ? "" : ", and " + std::to_string(more) + " more");
        return result;
    }

    RunResults collected;

private:
    Result check(const Rule& rule) {
        const auto skipped = [&rule](const std::string& reason, const Rule* cause) {
            return Result{&rule, Outcome::Skipped, reason, cause};
        };
        if (options.readOnly && rule.alters())
            return skipped("left out by --read-only", nullptr);
        const Result* const needed = resultOf(rule.needs);
        if (needed == nullptr || needed->outcome == Outcome::Passed)
            return run(rule);
        if (needed->outcome == Outcome::Skipped)
            return skipped(needed->observed, needed->cause != nullptr ? needed->cause : needed->rule);
        return skipped(concat("it needs '", rule.needs, "', which did not pass"), needed->rule);
    }

    Result run(const Rule& rule) {
        try {
            const vykel::FileStream lock = rule.alters() ? lockMachine(rule.lock) : nullptr;
            Account account = runOnce(rule, Stage::First, {});
            if (!account.notes.empty() && (rule.alters() || account.outcome == Outcome::Passed))
                runSecond(rule, account);
            if (!account.toolFailed.empty())
                throw Failure(concat("the rule '", rule.id, "' cannot be checked: ", account.toolFailed),
                              "This tool failed, not the plug-in.",
                              "Choose other rules with --rule, and report the failure.");
            return account;
        } catch (const NotTried& notTried) {
            return {&rule, notTried.outcome, notTried.observed, nullptr, {}, false, notTried.remedy};
        }
    }

    Account runOnce(const Rule& rule, Stage stage, const std::vector<std::string>& notes) {
        Account account = runStage(rule, options, stage, notes);
        for (const Incident& incident : account.incidents)
            incidents[incident.rule].push_back(
                incident.observed +
                (incident.rule == rule.id ? "" : concat(" (seen in rule '", rule.id, "')")));
        return account;
    }

    /// Runs the second process and adds its results to the first account.
    void runSecond(const Rule& rule, Account& first) {
        const bool passed = first.outcome == Outcome::Passed;
        Account second;
        try {
            second = runOnce(rule, passed ? Stage::Second : Stage::PutBack, first.notes);
        } catch (const Failure& failure) {
            second.toolFailed = failure.what();
        }
        first.duration += second.duration;
        first.wasCutShort = first.wasCutShort || second.wasCutShort;
        if (first.toolFailed.empty())
            first.toolFailed = second.toolFailed;
        if (passed) {
            first.outcome = second.outcome;
            first.observed = second.observed;
        } else if (isBroken(second.outcome)) {
            first.observed += "; then, in a new process, " + second.observed;
        }
        if (!rule.alters() || second.putBack)
            return;
        const std::string lost = "the old one of the device " + first.notes.at(0) + ", '" +
                                 first.notes.at(1) + "', could not be put back";
        first.observed += (first.observed.empty() ? "" : "; ") + lost;
        if (!first.toolFailed.empty())
            first.toolFailed += "; " + lost;
        if (first.outcome == Outcome::Passed)
            first.outcome = Outcome::Failed;
        else if (first.outcome == Outcome::Skipped)
            first.outcome = Outcome::Warning;
    }

    /// Null when there is none yet.
    Result* resultOf(std::string_view id) {
        const auto found = std::find_if(collected.results.begin(), collected.results.end(),
                                        [id](const Result& result) { return result.rule->id == id; });
        return found == collected.results.end() ? nullptr : &*found;
    }

    const RunOptions& options;
    Progress progress;
    std::map<std::string, std::vector<std::string>> incidents; // by rule
};

} // namespace

RunResults runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult) {
    Run run(options);
    for (const Rule& rule : allRules()) {
        if (run.collected.stopped)
            break;
        if (!isWanted(rule, options.rules))
            continue;
        try {
            const Result& result = run.add(rule);
            if (!isWatched(rule))
                onResult(result);
        } catch (const Stopped&) {
        }
        run.collected.stopped = StopRequest::isMade();
    }
    for (const std::string_view id : watched)
        if (const Result* const result = run.finish(*findRule(id)))
            onResult(*result);
    return std::move(run.collected);
}

} // namespace vykeldev::check
