#include "commands/Commands.h"
#include "doctor/Checks.h"
#include "machine/Registrations.h"
#include "machine/Setup.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Paths.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev {
namespace {

struct RegisterOptions {
    std::string name;
    std::string path;
    bool force = false;
};

ExitCode registerPlugin(const RegisterOptions& options) {
    const std::string path = absolutePath(options.path);
    std::string problem = pathProblem(path);
    if (problem.empty())
        problem = doctor::describeFlaw(path);
    if (!problem.empty() && !options.force) {
        throw Failure("'" + printable(path) + "' is not registered: " + problem, "",
                      "Give the path of the plug-in's DLL, or --force to register this one all the same.");
    }
    for (const SetupItem& item : completeSetup(false))
        if (!item.present)
            std::cout << "made: " << describe(item) << '\n';
    const std::string before = writeRegistration(options.name, path);
    std::cout << "registered " << printable(options.name) << ": " << printable(path)
              << (before.empty() || before == path ? "" : ", was " + printable(before)) << '\n';
    return ExitCode::Success;
}

} // namespace

void addRegisterCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<RegisterOptions>();
    CLI::App* const command = app.add_subcommand(
        "register", "Registers a plug-in, or changes its path; first prepares the machine as setup does");
    const auto checkName = [](const std::string& name) {
        return isRegistrationName(name) ? std::string() : "a name has 1 to 255 characters and no backslash";
    };
    command->add_option("NAME", options->name, "Any name; plug-ins are loaded in the order of their names")
        ->required()
        ->check(checkName)
        ->type_name("");
    command->add_option("PATH", options->path, "The plug-in's DLL")->required()->type_name("");
    command->add_flag("--force", options->force,
                      "Registers the path even if there is no file yet, or the file is no plug-in");
    command->callback(
        [options, &chosen] { chosen = {[options](const Context&) { return registerPlugin(*options); }}; });
}

} // namespace vykeldev
