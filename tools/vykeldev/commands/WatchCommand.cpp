#include "commands/WatchCommand.h"

#include "child/DeviceClient.h"
#include "commands/ChangeText.h"
#include "commands/FormatOption.h"
#include "output/Failures.h"
#include "system/DisplayText.h"
#include <CLI/CLI.hpp>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vykeldev {
namespace {

struct WatchOptions {
    bool json = false;
    double interval = 0.5; // seconds
    std::uint32_t format = 1;
};

/// Prints changes, each at once. False when nobody reads them any more. Throws Failure.
bool print(const std::vector<DeviceChange>& changes, const WatchOptions& options, bool colour) {
    for (const DeviceChange& change : changes) {
        std::cout << (options.json ? toJson(change, options.format) : toText(change, colour)) << '\n'
                  << std::flush;
        if (std::cout)
            continue;
        if (!isReaderGone())
            throw Failure("standard output cannot be written", "", "Is the disk full?");
        std::cout.clear();
        return false;
    }
    return true;
}

ExitCode watchDevices(const Context& context, const WatchOptions& options) {
    constexpr std::uint32_t neverEnough = std::numeric_limits<std::uint32_t>::max();
    DeviceClient client({context.library, 0, options.format, neverEnough, options.interval}, context);
    std::vector<DeviceInfo> known;
    std::string trouble; // reported last, so that lasting trouble is reported once
    while (client.next(DeviceClient::Clock::time_point::max()) == DeviceClient::Event::Read) {
        const Reading& reading = client.reading();
        if (!print(findChanges(known, reading.devices), options, context.colour))
            break;
        known = reading.devices;
        const std::string failure = reading.failure.is_null() ? "" : failureFrom(reading.failure).what();
        if (!failure.empty() && failure != trouble)
            context.notices() << "vykeldev: " << printable(failure) << "; watching on\n";
        trouble = failure;
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
    addFormatOption(*command, options->format);
    command->callback([options, &chosen] {
        chosen = {[options](const Context& context) { return watchDevices(context, *options); },
                  lineIf(options->json)};
    });
    command->footer("Ends with Ctrl-C, or when nobody reads its output any more; the exit code is 0 then.\n"
                    "Plug-ins that are registered while it watches are not seen.");
}

} // namespace vykeldev
