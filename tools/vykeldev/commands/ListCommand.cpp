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

/// What `list` shows.
struct Listing {
    Reading reading;
    std::exception_ptr error; ///< How a plug-in or the user ended the client after the reading, or null.
};

Listing readListing(const Context& context, const ListOptions& options) {
    using Event = DeviceClient::Event;
    const DeviceClient::Clock::time_point deadline = timeAfter(options.timeout);
    DeviceClient client({context.library, options.selection}, context);
    client.await(Event::Read, deadline);
    Listing listing{client.reading(), nullptr};
    const bool isAny = !listing.reading.devices.empty() || options.selection.isByName();
    if (!isAny && !listing.reading.failure.is_null())
        throw failureFrom(listing.reading.failure);
    try {
        client.await(Event::Done, deadline);
    } catch (const Failure&) {
        listing.error = std::current_exception();
    }
    return listing;
}

Json toDocument(const Listing& listing, std::uint32_t format) {
    Json document = {{"schemaVersion", 1}, {"tokenFormat", format}, {"devices", listing.reading.devices}};
    if (!listing.reading.failure.is_null())
        document["refresh"] = listing.reading.failure;
    return document;
}

/// Names the devices that have no number, though the refresh gave each device one.
void warnOfNumbers(const Context& context, const std::vector<DeviceInfo>& devices) {
    std::vector<std::string> names;
    for (const DeviceInfo& device : devices)
        if (!device.number)
            names.push_back("[" + std::to_string(device.index) + "] " + printable(device.token));
    if (!names.empty())
        printFailure(context.notices(), "vykeldev: warning: ",
                     Failure("no number, though the refresh gave one: " + joined(names, ", "),
                             "The plug-in did not keep it.",
                             "See the plug-in's documentation, or run 'vykeldev check PLUGIN'."),
                     context.verbose);
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

ExitCode listDevices(const Context& context, const ListOptions& options) {
    const Listing listing = readListing(context, options);
    const auto& [count, devices, failure] = listing.reading;
    const auto throwError = [&] {
        if (listing.error)
            std::rethrow_exception(listing.error);
    };
    if (options.json)
        printDocument(toDocument(listing, options.selection.tokenFormat), throwError);
    else if (!devices.empty())
        printText(devices, context.colour);
    throwError();
    if (!failure.is_null()) {
        printFailure(context.notices(), "vykeldev: warning: ", failureFrom(failure), context.verbose);
        return devices.empty() ? ExitCode::NothingListed : ExitCode::Warnings;
    }
    warnOfNumbers(context, devices);
    if (!devices.empty())
        return ExitCode::Success;
    const bool isSelected = count != 0 || options.selection.isByName();
    context.notices() << (isSelected ? "vykeldev: no device matches\n"
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
