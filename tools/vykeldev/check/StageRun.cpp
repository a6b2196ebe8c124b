#include "check/StageRun.h"

#include "check/Rules.h"
#include "check/Trace.h"

namespace vykeldev::check {
namespace {

constexpr std::uint32_t foreignException = 0xE06D7363; // of the Microsoft compiler

/// Checks a rule.
Verdict checkRule(const Rule& rule, const Subject& subject) {
    try {
        rule.check(subject);
        return {Outcome::Passed};
    } catch (const Verdict& verdict) {
        const bool isMild = verdict.outcome == Outcome::Failed && rule.severity == Severity::Warning;
        return {isMild ? Outcome::Warning : verdict.outcome, verdict.observed, verdict.remedy};
    } catch (const std::exception& exception) {
        return {Outcome::Unknown, exception.what()};
    }
}

/// The child's side.
void runInChild(const std::vector<std::string>& arguments, Reporter& reporter) {
    const auto stage = static_cast<Stage>(std::stoi(arguments.at(2)));
    Trace trace(reporter);
    if (const Rule* const rule = findRule(arguments[0])) {
        const auto [outcome, observed, remedy] =
            checkRule(*rule, {arguments[1], trace, stage, {arguments.begin() + 3, arguments.end()}});
        reporter.reportCut({{"outcome", outcome}, {"observed", observed}, {"remedy", remedy}});
    }
    exitImmediately(); // everything is reported; what the plug-in left behind must not spoil the end
}

/// What happened to a process that reported no verdict.
std::string endText(const ChildOutcome& child, std::chrono::milliseconds limit) {
    if (!child.end)
        return concat("it made no progress for ", limit.count(), " ms (--timeout gives more)");
    if (child.end->crashed)
        return "it crashed with " + crashText(child.end->code);
    return concat("it ended the process with exit code ", child.end->code);
}

} // namespace

const ChildTask checkRuleTask = {"check-rule", runInChild};

Verdict runStage(const CheckOptions& options, Stage stage, Result& result) {
    std::optional<Verdict> verdict;
    const auto take = [&](const Json& report) {
        result.notes = report.value("notes", result.notes);
        result.wasCutShort = report.value("cutShort", result.wasCutShort);
        result.putBack = report.value("putBack", result.putBack);
        if (report.contains("incident"))
            result.incidents.emplace_back(report["incident"], report.at("observed"));
        if (report.contains("outcome"))
            verdict = {report["outcome"], report.at("observed"), report.at("remedy")};
    };
    std::vector<std::string> arguments{result.rule->id, options.path,
                                       std::to_string(static_cast<int>(stage))};
    arguments.insert(arguments.end(), result.notes.begin(), result.notes.end());
    TaskRun run(checkRuleTask, arguments, take,
                result.rule->alters() ? TaskRun::CtrlC::Waits : TaskRun::CtrlC::Ends);
    const std::chrono::milliseconds limit(static_cast<long long>(1000 * options.timeout));
    const ChildOutcome child = run.finish(limit, TaskRun::Limit::BetweenReports);
    result.duration += child.duration;
    if (verdict)
        return *verdict;
    if (child.end && child.end->crashed && child.end->code == foreignException) {
        result.incidents.emplace_back("no-exception",
                                      "an exception left " + run.step() + " and ended the process");
        return Skipped("an exception ended the process; see 'no-exception'");
    }
    return Broken(endText(child, limit), run.step().empty() ? "" : " in: ", run.step());
}

} // namespace vykeldev::check
