#include "commands/ListCommand.h"

#include "child/DeviceClient.h"
#include "commands/FormatOption.h"
#include "output/Failures.h"
#include "output/Table.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include <algorithm>
#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <vector>

namespace vykeldev {
namespace {

/// Which devices of a reading are wanted.
struct Selection {
    std::optional<std::string> number; ///< As text, such as "KEL3".
    std::optional<std::string> alias;
    std::optional<std::string> token;
};

struct ListOptions {
    bool json = false;
    double timeout = std::numeric_limits<double>::infinity(); // seconds
    std::int32_t minVersion = 0;
    std::uint32_t format = 1;
    Selection selection;
};

bool isWanted(const DeviceInfo& device, const Selection& selection) {
    return (!selection.number || numberText(device.number) == *selection.number) &&
           (!selection.alias || device.alias == selection.alias) &&
           (!selection.token || device.token == *selection.token);
}

/// Leaves only the devices that are wanted.
void select(std::vector<DeviceInfo>& devices, const Selection& selection) {
    devices.erase(std::remove_if(devices.begin(), devices.end(),
                                 [&](const DeviceInfo& device) { return !isWanted(device, selection); }),
                  devices.end());
}

/// `selection` must outlive the parsing.
void addSelectionOptions(CLI::App& command, Selection& selection) {
    command.add_option("--number", selection.number, "Shows only the device of this number, such as KEL3")
        ->check(numberFlaw)
        ->type_name("KELn");
    command.add_option("--alias", selection.alias, "Shows only devices of exactly this alias")
        ->type_name("TEXT");
    command.add_option("--token", selection.token, "Shows only devices of exactly this token")
        ->type_name("TEXT");
}

/// What `list` shows.
struct Listing {
    Reading reading;
    Json error; ///< How a plug-in ended the client after the reading, or null.
};

Listing readListing(const Context& context, const ListOptions& options) {
    using Event = DeviceClient::Event;
    const DeviceClient::Clock::time_point deadline = timeAfter(options.timeout);
    DeviceClient client({context.library, options.minVersion, options.format}, context);
    client.await(Event::Read, deadline);
    Listing listing{client.reading(), nullptr};
    if (listing.reading.devices.empty() && !listing.reading.failure.is_null())
        throw failureFrom(listing.reading.failure);
    try {
        client.await(Event::Done, deadline);
    } catch (const Failure& failure) {
        listing.error = failure;
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
        if (device.number == vykel::noDeviceNumber)
            names.push_back("[" + std::to_string(device.index) + "] " + printable(device.token));
    if (!names.empty())
        printFailure(context.notices(), "vykeldev: warning: ",
                     Failure("no number, though the refresh gave one: " + joined(names, ", "),
                             "The plug-in did not keep it.",
                             "See the plug-in's documentation, or run 'vykeldev check PLUGIN'."),
                     context.verbose);
}

void printText(const std::vector<DeviceInfo>& devices, bool colour) {
    using Kind = Column::Kind;
    printTable(std::cout, colour,
               {{"INDEX", "index", Kind::Count},
                {"NUMBER", "number", Kind::DeviceNumber},
                {"ALIAS", "alias"},
                {"VERSION", "version", Kind::Count},
                {"SORT KEY", "sortKey", Kind::Count},
                {"TOKEN", "token"}},
               devices);
}

ExitCode listDevices(const Context& context, const ListOptions& options) {
    Listing listing = readListing(context, options);
    auto& [count, devices, failure] = listing.reading;
    select(devices, options.selection);
    const auto throwError = [&] {
        if (!listing.error.is_null())
            throw failureFrom(listing.error);
    };
    if (options.json)
        printDocument(toDocument(listing, options.format), throwError);
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
    context.notices() << (count != 0 ? "vykeldev: no device matches\n"
                                     : "vykeldev: no devices; 'vykeldev doctor' says why\n");
    return ExitCode::NothingListed;
}

} // namespace

void addListCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<ListOptions>();
    CLI::App* const command = app.add_subcommand("list", "Shows all devices, with new ones numbered");
    command->add_flag("--json", options->json, "Prints one JSON object");
    command->add_option("--min-version", options->minVersion, "Leaves out devices below this version")
        ->type_name("N");
    addFormatOption(*command, options->format);
    addSelectionOptions(*command, options->selection);
    command
        ->add_option("--timeout", options->timeout,
                     "Gives up, with exit code 1, after this many seconds (default: never)")
        ->check(inRange(0.001, 86400, "0.001 to 86400 seconds"))
        ->type_name("S");
    command->callback([options, &chosen] {
        chosen = {[options](const Context& context) { return listDevices(context, *options); },
                  documentIf(options->json)};
    });
}

} // namespace vykeldev
