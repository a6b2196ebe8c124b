#include "check/Runner.h"

#include "check/Rules.h"
#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "machine/Locks.h"
#include "output/Progress.h"
#include "pellumkelddk/user/FileLock.h"
#include "system/Console.h"
#include "system/Failure.h"

namespace vykeldev::check {
namespace {

/// Rules that the check of any other rule may find broken. Their results come last.
constexpr std::string_view watched[] = {"status-guard", "no-exception"};

/// True when the rule is one of those, or one of them needs it.
bool isWanted(const Rule& rule, const std::vector<std::string>& wanted) {
    for (const std::string& id : wanted)
        for (const Rule* other = findRule(id); other != nullptr; other = findRule(other->needs))
            if (other == &rule)
                return true;
    return wanted.empty();
}

/// Locks one of the machine's lock files as the library does, so that the library changes nothing meanwhile.
/// Waits for it, but not for long. Throws a warning when it cannot be locked.
vykel::FileStream lockMachine(const std::string& fileName) {
    try {
        vykel::FileStream stream = vykel::openLockFile((vykel::getConfigurationFolder() + fileName).c_str());
        if (lockInTime(stream.get(), [](auto) {}) == ERROR_SUCCESS)
            return stream;
    } catch (const vyerr::Exception&) {
        throw notTried("Run 'vykeldev doctor': it says why. Then check again.", "the machine's lock file ",
                       fileName, " cannot be opened or made");
    }
    throw notTried("Close the programs that use the devices, or run 'vykeldev doctor', and check again.",
                   "the machine's lock file ", fileName, " is locked; another process may be using it");
}

/// Runs the second process of a rule, and changes the result by what that shows.
void runSecond(const CheckOptions& options, Result& result) {
    Verdict& first = result;
    const bool passed = first.outcome == Outcome::Passed;
    const bool isKnown = first.outcome != Outcome::Unknown;
    Verdict second;
    try {
        second = runStage(options, passed ? Stage::Second : Stage::PutBack, result);
    } catch (const Stopped&) { // never while a rule alters something
        throw;
    } catch (const Failure& failure) {
        second = {Outcome::Unknown, failure.what()};
    }
    if (passed || (isKnown && second.outcome == Outcome::Unknown))
        first = second;
    else if (isKnown && isBroken(second.outcome))
        first.observed += "; then, in a new process, " + second.observed;
    if (!result.rule->alters() || result.putBack)
        return;
    first.observed += concat(first.observed.empty() ? "" : "; ", "the old one of the device ",
                             result.notes.at(0), ", '", result.notes.at(1), "', could not be put back");
    if (first.outcome == Outcome::Passed)
        first.outcome = Outcome::Failed;
    else if (first.outcome == Outcome::Skipped)
        first.outcome = Outcome::Warning;
}

/// Checks a rule in processes of its own. Throws Failure when that cannot be done.
Result run(const Rule& rule, const CheckOptions& options) {
    Result result{{}, &rule};
    Verdict& verdict = result;
    try {
        const vykel::FileStream lock = rule.alters() ? lockMachine(rule.lock) : nullptr;
        verdict = runStage(options, Stage::First, result);
        if (!result.notes.empty() && (rule.alters() || result.outcome == Outcome::Passed))
            runSecond(options, result);
    } catch (const Verdict& notTried) {
        verdict = notTried;
    }
    if (result.outcome == Outcome::Unknown)
        throw Failure(concat("the rule '", rule.id, "' cannot be checked: ", result.observed),
                      "This tool failed, not the plug-in.",
                      "Choose other rules with --rule, and report the failure.");
    return result;
}

/// Null when there is none yet.
Result* resultOf(Results& results, std::string_view id) {
    const auto found = std::find_if(results.begin(), results.end(),
                                    [id](const Result& result) { return result.rule->id == id; });
    return found == results.end() ? nullptr : &*found;
}

/// Checks a rule, unless there is a reason to skip it. Throws Failure when that cannot be done.
Result runUnlessSkipped(const Rule& rule, const CheckOptions& options, Results& earlier) {
    if (options.readOnly && rule.alters())
        return {Skipped("left out by --read-only"), &rule};
    const Result* const needed = resultOf(earlier, rule.needs);
    if (needed == nullptr || needed->outcome == Outcome::Passed)
        return run(rule, options);
    if (needed->outcome == Outcome::Skipped)
        return {Skipped(needed->observed), &rule, needed->cause != nullptr ? needed->cause : needed->rule};
    return {Skipped("it needs '", rule.needs, "', which did not pass"), &rule, needed->rule};
}

/// The result of a watched rule with everything that was seen of it; null when it was neither wanted nor
/// broken.
const Result* finish(const Rule& rule, Results& results) {
    std::vector<std::string> seen;
    for (const Result& each : results)
        for (const auto& [id, observed] : each.incidents)
            if (id == rule.id)
                seen.push_back(observed +
                               (each.rule == &rule ? "" : concat(" (seen in rule '", each.rule->id, "')")));
    if (seen.empty())
        return resultOf(results, rule.id);
    if (resultOf(results, rule.id) == nullptr)
        results.push_back({{}, &rule});
    Result* const result = resultOf(results, rule.id);
    Verdict& verdict = *result;
    verdict = Broken(seen.front(), seen.size() == 1 ? "" : concat(", and ", seen.size() - 1, " more"));
    result->cause = nullptr;
    return result;
}

} // namespace

Results runRules(const Context& context, const CheckOptions& options,
                 const std::function<void(const Result&)>& onResult) {
    Progress progress(!context.quiet);
    Results results;
    for (const Rule& rule : ruleTable) {
        if (!isWanted(rule, options.rules))
            continue;
        try {
            progress.show(concat("checking '", rule.id, "'"));
            results.push_back(runUnlessSkipped(rule, options, results));
            progress.show({});
            if (std::count(std::begin(watched), std::end(watched), rule.id) == 0)
                onResult(results.back());
        } catch (const Stopped&) {
        }
        if (StopRequest::isMade())
            break;
    }
    for (const std::string_view id : watched)
        if (const Result* const result = finish(*findRule(id), results))
            onResult(*result);
    return results;
}

} // namespace vykeldev::check
