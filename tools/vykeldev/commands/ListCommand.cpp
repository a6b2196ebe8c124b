#include "commands/Commands.h"
#include "commands/Devices.h"
#include "support/Enumerator.h"
#include "support/Json.h"
#include "support/Table.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <vector>

namespace vykeldev {
namespace {

struct ListOptions {
    bool json = false;
    std::int32_t minVersion = 0;
    std::uint32_t format = 1;
};

void printTable(const std::vector<DeviceInfo>& devices, bool colour) {
    using Align = Table::Align;
    Table table({{"INDEX", Align::Right},
                 {"NUMBER", Align::Left},
                 {"ALIAS", Align::Left},
                 {"VERSION", Align::Right},
                 {"SORT KEY", Align::Right},
                 {"TOKEN", Align::Left}});
    for (const DeviceInfo& device : devices) {
        table.addRow({std::to_string(device.index), numberText(device.number), device.alias.value_or("-"),
                      std::to_string(device.version), std::to_string(device.sortKey), device.token});
    }
    table.print(std::cout, colour);
}

void printJson(const std::vector<DeviceInfo>& devices, std::uint32_t format) {
    Json document = {{"schemaVersion", 1}, {"tokenFormat", format}, {"devices", Json::array()}};
    for (const DeviceInfo& device : devices) {
        document["devices"].push_back({{"index", device.index},
                                       {"number", numberOrNull(device.number)},
                                       {"alias", orNull(device.alias)},
                                       {"version", device.version},
                                       {"sortKey", device.sortKey},
                                       {"token", device.token}});
    }
    std::cout << textOf(document) << '\n';
}

ExitCode listDevices(const Context& context, const ListOptions& options) {
    const Enumerator enumerator(context.library);
    const DeviceListHandle list = enumerator.makeList();
    refresh(*list);
    const std::vector<DeviceInfo> devices = readDevices(*list, options.minVersion, options.format);
    if (options.json)
        printJson(devices, options.format);
    else if (!devices.empty())
        printTable(devices, context.colour);
    if (!devices.empty())
        return ExitCode::Success;
    std::cerr << "vykeldev: no devices; 'vykeldev plugins' shows which plug-ins are registered\n";
    return ExitCode::NothingListed;
}

} // namespace

void addListCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* const command = app.add_subcommand("list", "Shows all devices, with new ones numbered");
    command->add_flag("--json", options->json, "Prints one JSON object");
    command->add_option("--min-version", options->minVersion, "Leaves out devices below this version")
        ->type_name("N");
    command->add_option("--format", options->format, "Which form of the token to show: 1 (default) or 2")
        ->check(CLI::IsMember({1, 2}))
        ->type_name("N");
    command->callback([options, &chosen] {
        chosen = [options](const Context& context) { return listDevices(context, *options); };
    });
}

} // namespace vykeldev
