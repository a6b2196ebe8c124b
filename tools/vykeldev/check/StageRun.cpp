#include "check/StageRun.h"

#include "check/Rules.h"
#include "check/Trace.h"

namespace vykeldev::check {
namespace {

constexpr std::uint32_t foreignException = 0xE06D7363; // of the Microsoft compiler

/// Checks a rule. Returns the report of what came out.
Json checkRule(const Rule& rule, const Subject& subject) {
    try {
        rule.check(subject);
        return {{"outcome", Outcome::Passed}};
    } catch (const Verdict& verdict) {
        const bool isMild = verdict.outcome == Outcome::Failed && rule.severity == Severity::Warning;
        return {{"outcome", isMild ? Outcome::Warning : verdict.outcome},
                {"observed", verdict.observed},
                {"remedy", verdict.remedy}};
    } catch (const std::exception& exception) {
        return {{"toolFailed", exception.what()}};
    }
}

/// The child's side.
void runInChild(const std::vector<std::string>& arguments, Reporter& reporter) {
    const Rule* const rule = findRule(arguments.at(0));
    const auto stage = static_cast<Stage>(std::stoi(arguments.at(2)));
    Trace trace(reporter);
    if (rule != nullptr)
        reporter.reportCut(
            checkRule(*rule, {arguments[1], trace, stage, {arguments.begin() + 3, arguments.end()}}));
    exitImmediately(); // everything is reported; what the plug-in left behind must not spoil the end
}

void take(const Json& report, Account& account) {
    account.notes = report.value("notes", account.notes);
    account.wasCutShort = report.value("cutShort", account.wasCutShort);
    account.putBack = report.value("putBack", account.putBack);
    account.toolFailed = report.value("toolFailed", account.toolFailed);
    const auto observed = report.value("observed", std::string());
    if (const auto rule = report.value("incident", std::string()); !rule.empty())
        account.incidents.push_back({rule, observed});
    if (report.contains("outcome")) {
        account.ended = true;
        account.outcome = report["outcome"].get<Outcome>();
        account.observed = observed;
        account.remedy = report.value("remedy", std::string());
    }
}

/// What happened to a process that reported no outcome.
std::string endText(const ChildOutcome& child, std::chrono::milliseconds limit) {
    if (!child.end)
        return "it made no progress for " + std::to_string(limit.count()) + " ms (--timeout gives more)";
    if (child.end->crashed)
        return "it crashed with " + crashText(child.end->code);
    return "it ended the process with exit code " + std::to_string(child.end->code);
}

} // namespace

const ChildTask checkRuleTask = {"check-rule", runInChild};

Account runStage(const Rule& rule, const RunOptions& options, Stage stage,
                 const std::vector<std::string>& notes) {
    Account account;
    account.rule = &rule;
    std::vector<std::string> arguments{rule.id, options.path, std::to_string(static_cast<int>(stage))};
    arguments.insert(arguments.end(), notes.begin(), notes.end());
    TaskRun run(
        checkRuleTask, arguments, [&account](const Json& report) { take(report, account); },
        rule.alters() ? TaskRun::CtrlC::Waits : TaskRun::CtrlC::Ends);
    const ChildOutcome child = run.finish(options.limit, TaskRun::Limit::BetweenReports);
    account.duration = child.duration;
    if (account.ended || !account.toolFailed.empty())
        return account;
    account.observed = endText(child, options.limit) + (run.step().empty() ? "" : " in: " + run.step());
    if (child.end && child.end->crashed && child.end->code == foreignException) {
        account.incidents.push_back(
            {"no-exception", "an exception left " + run.step() + " and ended the process"});
        account.outcome = Outcome::Skipped;
        account.observed = "an exception ended the process; see 'no-exception'";
    }
    return account;
}

} // namespace vykeldev::check
