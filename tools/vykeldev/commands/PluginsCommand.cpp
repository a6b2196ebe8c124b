#include "commands/Commands.h"
#include "doctor/Checks.h"
#include "machine/Registrations.h"
#include "output/Json.h"
#include "output/Table.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev {
namespace {

void printTable(const std::vector<Registration>& registrations, bool colour) {
    Table table({{"NAME", Table::Align::Left}, {"STATE", Table::Align::Left}, {"PATH", Table::Align::Left}});
    for (const Registration& registration : registrations) {
        table.addRow({registration.name, registration.problem.empty() ? "ok" : registration.problem,
                      registration.path.value_or("-")});
    }
    table.print(std::cout, colour);
}

void printJson(const std::vector<Registration>& registrations) {
    Json document = {{"schemaVersion", 1}, {"plugins", Json::array()}};
    for (const Registration& registration : registrations) {
        const std::string& problem = registration.problem;
        document["plugins"].push_back({{"name", registration.name},
                                       {"path", orNull(registration.path)},
                                       {"problem", problem.empty() ? Json() : Json(problem)}});
    }
    std::cout << textOf(document) << '\n';
}

ExitCode showPlugins(const Context& context, bool json) {
    std::vector<Registration> registrations = readRegistrations();
    for (Registration& registration : registrations)
        if (registration.path && registration.problem.empty())
            registration.problem = doctor::describeFlaw(*registration.path);
    if (json)
        printJson(registrations);
    else if (!registrations.empty())
        printTable(registrations, context.colour);
    if (!registrations.empty())
        return ExitCode::Success;
    context.notices() << "vykeldev: no plug-in is registered; 'vykeldev register NAME PATH' registers one\n";
    return ExitCode::NothingListed;
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

} // namespace vykeldev
