#include "check/StageRun.h"

#include "check/Trace.h"

namespace vykeldev::check {
namespace {

constexpr std::uint32_t foreignException = 0xE06D7363; // of the Microsoft compiler

void checkRule(const Rule& rule, const Subject& subject) {
    Trace& trace = subject.trace;
    try {
        rule.check(subject);
        trace.finished(Outcome::Passed, "");
    } catch (const Broken& broken) {
        const bool warning = rule.severity == Severity::Warning;
        trace.finished(warning ? Outcome::Warning : Outcome::Failed, broken.observed);
    } catch (const Questionable& questionable) {
        trace.finished(Outcome::Warning, questionable.observed);
    } catch (const Skipped& skipped) {
        trace.finished(Outcome::Skipped, skipped.reason);
    } catch (const std::exception& exception) {
        trace.toolFailed(exception.what());
    }
}

/// The child's side.
void runInChild(const std::vector<std::string>& arguments, Reporter& reporter) {
    const Rule* const rule = findRule(arguments.at(0));
    const auto stage = static_cast<Stage>(std::stoi(arguments.at(2)));
    Trace trace(reporter);
    if (rule != nullptr)
        checkRule(*rule, {arguments[1], trace, stage, {arguments.begin() + 3, arguments.end()}});
    exitImmediately(); // everything is reported; what the plug-in left behind must not spoil the end
}

void take(const Json& report, Account& account) {
    account.notes = report.value("notes", account.notes);
    account.putBack = report.value("putBack", account.putBack);
    account.toolFailed = report.value("toolFailed", account.toolFailed);
    const auto observed = report.value("observed", std::string());
    if (const auto rule = report.value("incident", std::string()); !rule.empty())
        account.incidents.push_back({rule, observed});
    if (const auto outcome = outcomeOf(report.value("outcome", std::string()))) {
        account.outcome = outcome;
        account.observed = observed;
    }
}

/// What happened to a process that reported no outcome.
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

const ChildTask checkRuleTask = {"check-rule", runInChild};

Account runStage(const StageTask& task, std::chrono::milliseconds limit) {
    Account account;
    std::vector<std::string> arguments{task.rule, task.plugin, std::to_string(static_cast<int>(task.stage))};
    arguments.insert(arguments.end(), task.notes.begin(), task.notes.end());
    TaskRun run(checkRuleTask, arguments, [&account](const Json& report) { take(report, account); });
    const ChildOutcome child = run.finish(limit, TaskRun::Limit::BetweenReports);
    account.duration = child.duration;
    if (account.outcome || !account.toolFailed.empty())
        return account;
    account.outcome = Outcome::Failed;
    account.observed = endText(child, limit) + (run.step().empty() ? "" : " in: " + run.step());
    if (child.end == ChildOutcome::End::Crashed && child.code == foreignException) {
        account.incidents.push_back(
            {"no-exception", "an exception left " + run.step() + " and ended the process"});
        account.outcome = Outcome::Skipped;
        account.observed = "an exception ended the process; see 'no-exception'";
    }
    return account;
}

} // namespace vykeldev::check
