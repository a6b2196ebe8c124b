#include "commands/ChangeText.h"
#include "commands/Commands.h"
#include "platform/Console.h"
#include "support/Enumerator.h"
#include "support/Failure.h"
#include "support/NumberRange.h"
#include <algorithm>
#include <chrono>
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vykeldev {
namespace {

struct WatchOptions {
    bool json = false;
    double interval = 0.5; // seconds
};

/// Hands a line to the reader at once. False when there is no reader any more. Throws Failure.
bool writeLine(const std::string& line) {
    if (std::cout << line << '\n' << std::flush)
        return true;
    if (!isReaderGone())
        throw Failure("standard output cannot be written", "", "Is the disk full?");
    std::cout.clear();
    return false;
}

/// Prints changes. False when nobody reads them. Throws Failure.
bool print(const std::vector<DeviceChange>& changes, const WatchOptions& options, bool colour) {
    return std::all_of(changes.begin(), changes.end(), [&](const DeviceChange& change) {
        return writeLine(options.json ? toJson(change) : toText(change, colour));
    });
}

/// Asks every device of a refreshed list. Throws Failure when the list does not hand one out.
std::vector<DeviceState> readStates(vykel::IDeviceList& list) {
    std::vector<DeviceState> states;
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vykel::IDevice* const device = list.getDevice(index, 0, &status);
        if (device == nullptr)
            throw statusFailure("getting device " + std::to_string(index), status);
        const char* const token = device->getPersistentToken(2);
        DeviceState state{token != nullptr ? token : "", device->getNumber(), std::nullopt};
        if (const char* const alias = device->getAlias())
            state.alias = alias;
        states.push_back(std::move(state));
    }
    return states;
}

/// Refreshes the list when it is stale and compares it with what is known of it; other processes change
/// numbers and aliases of a list that is not. Throws Failure; then all is as before.
std::vector<DeviceChange> findChanges(vykel::IDeviceList& list, std::vector<DeviceState>& known) {
    if (list.isStale())
        refresh(list);
    std::vector<DeviceState> now = readStates(list);
    std::vector<DeviceChange> changes = compareStates(known, now);
    known.swap(now);
    return changes;
}

ExitCode watchDevices(const Context& context, const WatchOptions& options) {
    const std::chrono::milliseconds interval(static_cast<std::int64_t>(1000 * options.interval));
    StopRequest stop;
    const Enumerator enumerator(context.library);
    const DeviceListHandle list = enumerator.makeList();
    std::vector<DeviceState> known;
    std::vector<DeviceChange> changes = findChanges(*list, known);
    std::string trouble; // reported last: what lasts is reported once
    while (print(changes, options, context.colour) && !stop.waitFor(interval)) {
        changes.clear();
        try {
            changes = findChanges(*list, known);
            trouble.clear();
        } catch (const std::exception& failure) {
            if (trouble != failure.what()) {
                trouble = failure.what();
                std::cerr << "vykeldev: " << trouble << "; watching on\n";
            }
        }
    }
    return ExitCode::Success;
}

} // namespace

void addWatchCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* const command = app.add_subcommand("watch", "Shows the devices and then what changes");
    command->add_flag("--json", options->json, "Prints one JSON object a line for each change");
    command->add_option("--interval", options->interval, "Seconds between two looks (default 0.5)")
        ->check(numberFrom(0.01, "0.01 to 86400 seconds", 86400))
        ->type_name("S");
    command->callback([options, &chosen] {
        chosen = [options](const Context& context) { return watchDevices(context, *options); };
    });
    command->footer("Ends with Ctrl-C, or when nobody reads its output any more; the exit code is 0 then.\n"
                    "Plug-ins that are registered while it watches are not seen.");
}

} // namespace vykeldev
