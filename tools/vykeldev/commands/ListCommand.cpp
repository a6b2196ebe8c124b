#include "commands/ListCommand.h"

#include "child/DeviceClient.h"
#include "commands/SelectionOptions.h"
#include "output/Failures.h"
#include "output/Table.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include <exception>

namespace vykeldev {
namespace {

struct ListOptions : CommonOptions {
    double timeout = unlimited; // seconds
    Selection selection;
};

/// Names the devices that have no number, though the refresh gave each device one.
void warnOfNumbers(const Context& context, const std::vector<DeviceInfo>& devices) {
    std::vector<std::string> names;
    for (const DeviceInfo& device : devices)
        if (!device.number)
            names.push_back("[" + std::to_string(device.index) + "] " + printable(device.token));
    if (!names.empty())
        warn(context, Failure("no number, though the refresh gave one: " + joined(names, ", "),
                              "The plug-in did not keep it.",
                              "See the plug-in's documentation, or run 'vykeldev check PLUGIN'."));
}

void printText(Json devices, bool colour) {
    using Kind = Column::Kind;
    for (Json& device : devices) // the name is enough to tell it from others
        if (Json& plugin = device["plugin"]; !plugin.is_null())
            plugin = plugin.get<std::string>().substr(plugin.get<std::string>().find_last_of("\\/") + 1);
    printTable(std::cout, colour,
               {{"INDEX", "index", Kind::Count},
                {"NUMBER", "number", Kind::DeviceNumber},
                {"ALIAS", "alias"},
                {"VERSION", "version", Kind::Count},
                {"SORT KEY", "sortKey", Kind::Count},
                {"TOKEN", "token"},
                {"PLUG-IN", "plugin"}},
               devices);
}

ExitCode listDevices(Context& context, const ListOptions& options) {
    using Event = DeviceClient::Event;
    const DeviceClient::Clock::time_point deadline = timeAfter(options.timeout);
    DeviceClient client({context.library, options.selection}, context);
    client.await(Event::Read, deadline);
    const auto [count, devices, failure] = client.reading();
    const bool isByName = options.selection.isByName();
    if (failure && devices.empty() && !isByName)
        throw *failure;
    context.document.update({{"tokenFormat", options.selection.tokenFormat}, {"devices", devices}});
    if (failure)
        context.document["refresh"] = *failure;
    if (!options.json && !devices.empty())
        printText(context.document["devices"], context.colour);
    client.await(Event::Done, deadline);
    if (failure) {
        warn(context, *failure);
        return devices.empty() ? ExitCode::NothingListed : ExitCode::Warnings;
    }
    warnOfNumbers(context, devices);
    if (!devices.empty())
        return ExitCode::Success;
    context.notices() << (count != 0 || isByName
                              ? "vykeldev: no device matches\n"
                              : typeable("vykeldev: no devices; 'vykeldev doctor' says why\n"));
    return ExitCode::NothingListed;
}

} // namespace

void addListCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addCommand(
        app, chosen, {"list", "Shows all devices, with new ones numbered", "list --json --min-version 2"},
        listDevices);
    command
        .add_option("--min-version", options.selection.minVersion, "Leaves out devices below this version")
        ->type_name("N");
    addSelectionOptions(command, options.selection);
    addSeconds(command, "--timeout", options.timeout,
               "Gives up, with exit code 1, after this many seconds (default: never)", 0.001);
}

} // namespace vykeldev
