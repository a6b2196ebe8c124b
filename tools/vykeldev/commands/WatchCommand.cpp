#include "commands/ChangeText.h"
#include "commands/Commands.h"
#include "platform/Console.h"
#include "support/Enumerator.h"
#include "support/Failure.h"
#include "support/NumberRange.h"
#include <chrono>
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vykeldev {
namespace {

struct WatchOptions {
    bool json = false;
    double interval = 0.5; // seconds
};

/// Prints changes, each at once. False when nobody reads them any more. Throws Failure.
bool print(const std::vector<DeviceChange>& changes, const WatchOptions& options, bool colour) {
    for (const DeviceChange& change : changes) {
        std::cout << (options.json ? toJson(change) : toText(change, colour)) << '\n' << std::flush;
        if (std::cout)
            continue;
        if (!isReaderGone())
            throw Failure("standard output cannot be written", "", "Is the disk full?");
        std::cout.clear();
        return false;
    }
    return true;
}

/// Refreshes the list when it is stale, and compares it with `known`, which it updates; other processes
/// change numbers and aliases also of a list that is not stale. Throws Failure and leaves `known` as it is.
std::vector<DeviceChange> updateKnown(vykel::IDeviceList& list, std::vector<DeviceInfo>& known) {
    if (list.isStale())
        refresh(list);
    std::vector<DeviceInfo> now = readDevices(list, 0, 2);
    std::vector<DeviceChange> changes = findChanges(known, now);
    known.swap(now);
    return changes;
}

ExitCode watchDevices(const Context& context, const WatchOptions& options) {
    const std::chrono::milliseconds interval(static_cast<std::int64_t>(1000 * options.interval));
    StopRequest stop;
    const Enumerator enumerator(context.library);
    const DeviceListHandle list = enumerator.makeList();
    std::vector<DeviceInfo> known;
    std::vector<DeviceChange> changes = updateKnown(*list, known);
    std::string trouble; // reported last, so that lasting trouble is reported once
    while (print(changes, options, context.colour) && !stop.waitFor(interval)) {
        changes.clear();
        try {
            changes = updateKnown(*list, known);
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
    command->add_option("--interval", options->interval, "Seconds between two readings (default 0.5)")
        ->check(inRange(0.01, 86400, "0.01 to 86400 seconds"))
        ->type_name("S");
    command->callback([options, &chosen] {
        chosen = [options](const Context& context) { return watchDevices(context, *options); };
    });
    command->footer("Ends with Ctrl-C, or when nobody reads its output any more; the exit code is 0 then.\n"
                    "Plug-ins that are registered while it watches are not seen.");
}

} // namespace vykeldev
