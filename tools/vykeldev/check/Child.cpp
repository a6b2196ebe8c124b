#include "check/Child.h"

#include "check/Process.h"
#include "check/Trace.h"
#include "Commands.h"
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <memory>

namespace vykeldev {
namespace {

using check::Outcome;

constexpr const char* commandName = "check-rule";

struct RuleOptions {
    std::string rule;
    std::string path;
};

void checkRule(const check::Rule& rule, const std::string& path) {
    check::Trace trace;
    try {
        rule.check({path, trace});
        trace.finished(Outcome::Passed, "");
    } catch (const check::Broken& broken) {
        const bool warning = broken.onlyWarning || rule.severity == check::Severity::Warning;
        trace.finished(warning ? Outcome::Warning : Outcome::Failed, broken.observed);
    } catch (const check::Skipped& skipped) {
        trace.finished(Outcome::Skipped, skipped.reason);
    }
}

} // namespace

std::vector<std::string> check::checkRuleArguments(const std::string& rule, const std::string& plugin) {
    return {commandName, rule, plugin};
}

void addCheckRuleCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<RuleOptions>();
    CLI::App* const command = app.add_subcommand(commandName, "Checks one rule, for 'check'");
    command->group(""); // hidden
    command->add_option("RULE", options->rule)->required();
    command->add_option("PLUGIN", options->path)->required();
    command->callback([options, &chosen] {
        chosen = [options](const Context&) {
            const check::Rule* const rule = check::findRule(options->rule);
            if (rule == nullptr)
                return ExitCode::WrongUsage;
            check::crashQuietly();
            checkRule(*rule, options->path);
            std::_Exit(0); // all is told; what the plug-in left behind must not spoil the end
        };
    });
}

} // namespace vykeldev
