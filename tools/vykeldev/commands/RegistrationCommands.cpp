#include "commands/RegistrationCommands.h"

#include "machine/PluginFile.h"
#include "machine/Registrations.h"
#include "machine/Setup.h"
#include "output/Json.h"
#include "output/Table.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Paths.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev {
namespace {

/// Why the file at a path cannot be used as a plug-in, as far as that shows from outside, or empty.
std::string fileProblem(const std::string& path) {
    const std::string problem = pathProblem(path);
    return problem.empty() ? describeFlaw(path) : problem;
}

std::string problemOf(const Registration& registration) {
    if (!registration.error)
        return fileProblem(*registration.path);
    const LibraryError& error = *registration.error;
    return std::string(vykel::pluginPathValue) + " cannot be read: " + error.systemText +
           (error.system ? " (" + std::to_string(*error.system) + ")" : "");
}

Json toJson(const Registration& registration) {
    const std::string problem = problemOf(registration);
    return {{"name", registration.name},
            {"path", orNull(registration.path)},
            {"problem", problem.empty() ? Json() : Json(problem)}};
}

ExitCode showPlugins(const Context& context, bool json) {
    Json plugins = Json::array();
    for (const Registration& registration : readRegistrations())
        plugins.push_back(toJson(registration));
    if (json)
        std::cout << textOf({{"schemaVersion", 1}, {"plugins", plugins}}) << '\n';
    else if (!plugins.empty())
        printTable(std::cout, context.colour,
                   {{"NAME", "name"}, {"STATE", "problem", Column::Kind::Text, "ok"}, {"PATH", "path"}},
                   plugins);
    if (!plugins.empty())
        return ExitCode::Success;
    context.notices() << "vykeldev: no plug-in is registered; 'vykeldev register NAME PATH' registers one\n";
    return ExitCode::NothingListed;
}

struct RegisterOptions {
    std::string name;
    std::string path;
    bool force = false;
};

ExitCode registerPlugin(const RegisterOptions& options) {
    const std::string path = absolutePath(options.path);
    const std::string problem = fileProblem(path);
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

void addPluginsCommand(CLI::App& app, Run& chosen) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command =
        app.add_subcommand("plugins", "Shows the registered plug-ins, without loading them");
    command->add_flag("--json", *json, "Prints one JSON object");
    command->callback([json, &chosen] {
        chosen = {[json](const Context& context) { return showPlugins(context, *json); }, documentIf(*json)};
    });
}

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

void addUnregisterCommand(CLI::App& app, Run& chosen) {
    const auto name = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand("unregister", "Removes the registration of a plug-in");
    const auto checkName = [](const std::string& text) {
        return isRegistrationName(text) ? std::string() : "no plug-in can have this name";
    };
    command->add_option("NAME", *name, "The name it is registered under")
        ->required()
        ->check(checkName)
        ->type_name("");
    command->callback([name, &chosen] {
        chosen = {[name](const Context&) {
            removeRegistration(*name);
            std::cout << "unregistered " << printable(*name) << '\n';
            return ExitCode::Success;
        }};
    });
}

} // namespace vykeldev
