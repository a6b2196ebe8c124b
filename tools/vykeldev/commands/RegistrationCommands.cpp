#include "commands/RegistrationCommands.h"

#include "machine/Findings.h"
#include "machine/PluginFile.h"
#include "machine/Registrations.h"
#include "machine/Setup.h"
#include "output/Failures.h"
#include "output/Table.h"
#include "PluginRegistrations.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Paths.h"

namespace vykeldev {
namespace {

/// Why the file at a path cannot be used as a plug-in, as far as that shows from outside, or empty.
std::string fileProblem(const std::string& path) {
    const std::string problem = pathProblem(path);
    return problem.empty() ? describeFlaw(path) : problem;
}

Json toJson(const Registration& registration) {
    const auto& [name, path, error] = registration;
    const std::string problem = error ? concat(vykel::pluginPathValue, " cannot be read: ", error->systemText,
                                               error->system ? concat(" (", *error->system, ')') : "")
                                      : fileProblem(*path);
    Json json = factsOf(path.value_or(""));
    json.update({{"name", name}, {"path", path}, {"problem", textOrNull(problem)}});
    return json;
}

ExitCode showPlugins(Context& context, const CommonOptions& options) {
    Json plugins = Json::array();
    for (const Registration& registration : readRegistrations())
        plugins.push_back(toJson(registration));
    if (options.json)
        context.document["plugins"] = plugins;
    else if (!plugins.empty())
        printTable(std::cout, context.colour,
                   {{"NAME", "name"},
                    {"STATE", "problem", Column::Kind::Text, "ok"},
                    {"VERSION", "version"},
                    {"MAKER", "maker"},
                    {"WRITTEN", "written"},
                    {"PATH", "path"}},
                   plugins);
    if (!plugins.empty())
        return ExitCode::Success;
    context.notices() << typeable(
        "vykeldev: no plug-in is registered; 'vykeldev register NAME PATH' registers one\n");
    return ExitCode::NothingListed;
}

struct RegisterOptions : CommonOptions {
    std::string name;
    std::string path;
    bool force = false;
};

ExitCode registerPlugin(Context& context, const RegisterOptions& options) {
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
    if (const std::string bad = problem.empty() ? describeBadDependencies(path) : ""; !bad.empty())
        warn(context, Failure(bad, finding::dependencyMissing.meaning,
                              finding::dependencyMissing.remedyFor(options.name)));
    return ExitCode::Success;
}

ExitCode unregisterPlugin(Context&, const RegisterOptions& options) {
    removeRegistration(options.name);
    std::cout << "unregistered " << printable(options.name) << '\n';
    return ExitCode::Success;
}

/// Adds the argument that names a plug-in. `flaw` says what is wrong with a text that names none.
void addName(CLI::App& command, RegisterOptions& options, const char* description, const char* flaw) {
    addArgument(command, "NAME", options.name, description)->check([flaw](const std::string& name) {
        return isRegistrationName(name) ? "" : std::string(flaw);
    });
}

} // namespace

void addPluginsCommand(CLI::App& app, Run& chosen) {
    addCommand(app, chosen, {"plugins", "Shows the registered plug-ins, without loading them", "plugins"},
               showPlugins);
}

void addRegisterCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addCommand(
        app, chosen,
        {"register", "Registers a plug-in, or changes its path; first prepares the machine as setup does",
         "register Left C:\\Drivers\\left.dll"},
        registerPlugin, JsonOutput::None);
    addName(command, options, "Any name; plug-ins are loaded in the order of their names",
            "a name has 1 to 255 characters and no backslash");
    addArgument(command, "PATH", options.path, "The plug-in's DLL");
    command.add_flag("--force", options.force,
                     "Registers the path even if there is no file yet, or the file is no plug-in");
}

void addUnregisterCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] =
        addCommand(app, chosen, {"unregister", "Removes the registration of a plug-in", "unregister Left"},
                   unregisterPlugin, JsonOutput::None);
    addName(command, options, "The name it is registered under", "no plug-in can have this name");
}

} // namespace vykeldev
