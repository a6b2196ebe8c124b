#include "check/CheckCommand.h"

#include "check/Results.h"
#include "check/Rules.h"
#include "check/Runner.h"
#include "output/Failures.h"
#include "system/Console.h"
#include "system/DisplayText.h"
#include "system/Paths.h"

namespace vykeldev {
namespace {

void printRules(bool json) {
    Json rules = Json::array();
    for (const check::Rule& rule : check::ruleTable) {
        rules.push_back({{"id", rule.id}, {"title", rule.title}, {"severity", nameOf(rule.severity)}});
        if (!json)
            std::cout << rule.id << '\t' << rule.title << '\n';
    }
    if (json)
        std::cout << textOf({{"schemaVersion", 1}, {"rules", rules}}) << '\n';
}

ExitCode checkPlugin(Context& context, const check::CheckOptions& given) {
    check::CheckOptions options = given;
    options.path = absolutePath(given.path);
    const std::string problem = pathProblem(options.path);
    if (!problem.empty())
        throw Failure("'" + printable(options.path) + "' cannot be checked: " + problem, "",
                      "Give the path of the plug-in's DLL.");
    if (!options.json)
        std::cout << "Checking " << printable(options.path) << std::endl;
    const check::Results results = check::runRules(context, options, [&](const check::Result& result) {
        if (!options.json)
            check::printResult(std::cout, result, context.colour);
    });
    context.document.update(check::toDocument(options.path, results));
    if (!options.json)
        check::printSummary(std::cout, results);
    if (StopRequest::isMade())
        throw Stopped();
    if (check::countOf(results, check::Outcome::Failed) != 0)
        return ExitCode::Broken;
    return check::countOf(results, check::Outcome::Warning) != 0 ? ExitCode::Warnings : ExitCode::Success;
}

} // namespace

void addCheckCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addCommand(
        app, chosen,
        {"check", "Checks a plug-in against its contract", "check left.dll --read-only",
         "Each rule runs in a process of its own. Exit codes: 0 every rule passed or was skipped, 4 only "
         "warnings (also when there was no number or alias to try), 5 a rule is broken."},
        checkPlugin);
    addArgument(command, "PLUGIN", options.path, "The plug-in's DLL; it need not be registered");
    addSeconds(command, "--timeout", options.timeout,
               "Seconds without progress after which a rule has failed (default 10)", 1);
    command.add_flag("--read-only", options.readOnly,
                     "Leaves out the rules that change one number and one alias for a moment");
    command
        .add_option("--rule", options.rules,
                    "Checks only this rule and those that it needs; may be given more than once")
        ->check([](const std::string& id) {
            return check::findRule(id) != nullptr ? std::string()
                                                  : "there is no rule '" + id + "'; --list-rules shows them";
        })
        ->allow_extra_args(false) // the path may follow
        ->type_name("ID");
    command.add_flag_callback(
        "--list-rules",
        [json = &options.json] { // the parser has read --json by now, because that was added first
            printRules(*json);
            throw CLI::Success();
        },
        "Lists the rules and checks nothing");
}

} // namespace vykeldev
