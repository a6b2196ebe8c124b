#include "check/Child.h"

#include "check/Trace.h"
#include "commands/Commands.h"
#include "platform/Process.h"
#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

namespace vykeldev {
namespace {

using check::Outcome;

constexpr const char* commandName = "check-rule";

struct RuleOptions {
    std::string mark;
    std::string rule;
    std::string path;
    int stage = 0;
    std::string notes;
};

void checkRule(const check::Rule& rule, const check::Subject& subject) {
    check::Trace& trace = subject.trace;
    try {
        rule.check(subject);
        trace.finished(Outcome::Passed, "");
    } catch (const check::Broken& broken) {
        const bool warning = rule.severity == check::Severity::Warning;
        trace.finished(warning ? Outcome::Warning : Outcome::Failed, broken.observed);
    } catch (const check::Questionable& questionable) {
        trace.finished(Outcome::Warning, questionable.observed);
    } catch (const check::Skipped& skipped) {
        trace.finished(Outcome::Skipped, skipped.reason);
    } catch (const std::exception& exception) {
        trace.toolFailed(exception.what());
    }
}

[[noreturn]] void runAsChild(const check::Rule& rule, const RuleOptions& options) {
    check::crashQuietly();
    const auto notes = nlohmann::json::parse(options.notes).get<std::vector<std::string>>();
    check::Trace trace(options.mark);
    checkRule(rule, {options.path, trace, static_cast<check::Stage>(options.stage), notes});
    check::endAtOnce(); // all is told; what the plug-in left behind must not spoil the end
}

} // namespace

std::vector<std::string> check::childArguments(const ChildTask& task) {
    return {commandName,
            task.mark,
            task.rule,
            task.plugin,
            std::to_string(static_cast<int>(task.stage)),
            nlohmann::json(task.notes).dump(-1, ' ', true)};
}

void addCheckRuleCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<RuleOptions>();
    CLI::App* const command = app.add_subcommand(commandName, "Checks one rule, for 'check'");
    command->group(""); // hidden
    command->add_option("MARK", options->mark)->required();
    command->add_option("RULE", options->rule)->required();
    command->add_option("PLUGIN", options->path)->required();
    command->add_option("STAGE", options->stage)->required();
    command->add_option("NOTES", options->notes)->required();
    command->callback([options, &chosen] {
        chosen = [options](const Context&) {
            const check::Rule* const rule = check::findRule(options->rule);
            if (rule != nullptr)
                runAsChild(*rule, *options);
            return ExitCode::WrongUsage;
        };
    });
}

} // namespace vykeldev
