#include "commands/WatchCommand.h"

#include "child/DeviceClient.h"
#include "commands/ChangeText.h"
#include "commands/SelectionOptions.h"
#include "output/Failures.h"
#include "system/Console.h"
#include "system/DisplayText.h"
#include <ctime>

namespace vykeldev {
namespace {

struct WatchOptions : CommonOptions {
    double interval = 0.5; // seconds
    std::uint32_t format = 1;
};

std::string line(const DeviceChange& change, const WatchOptions& options, bool colour) {
    const std::string time = utcText(std::time(nullptr));
    if (!options.json)
        return time + "  " + toText(change, colour);
    Json event = toDocument(change, options.format);
    event["time"] = time;
    return textOf(event, -1);
}

/// Prints changes, each at once. False when nobody reads them any more. Throws Failure.
bool print(const std::vector<DeviceChange>& changes, const WatchOptions& options, bool colour) {
    for (const DeviceChange& change : changes) {
        std::cout << line(change, options, colour) << '\n' << std::flush;
        if (std::cout)
            continue;
        if (!isReaderGone())
            throw Failure("standard output cannot be written", "", "Is the disk full?");
        std::cout.clear();
        return false;
    }
    return true;
}

/// Returns when nobody reads the output any more. Throws Failure, and Stopped.
void watchWhileRead(const Context& context, const WatchOptions& options) {
    constexpr std::uint32_t neverEnough = std::numeric_limits<std::uint32_t>::max();
    Selection all;
    all.tokenFormat = options.format;
    DeviceClient client({context.library, all, neverEnough, options.interval}, context);
    std::optional<std::vector<DeviceInfo>>
        last;            // none before the first reading: then all devices are present
    std::string trouble; // reported last, so that lasting trouble is reported once
    while (!isReaderGone()) {
        if (client.next(timeAfter(0.25)) != DeviceClient::Event::Read)
            continue; // time is over; it never is done
        const Reading& reading = client.reading();
        std::vector<DeviceChange> changes =
            findChanges(last.value_or(std::vector<DeviceInfo>()), reading.devices);
        for (DeviceChange& change : changes)
            change.kind = last ? change.kind : DeviceChange::Kind::Present;
        if (!print(changes, options, context.colour))
            return;
        last = reading.devices;
        const std::string failure = reading.failure ? reading.failure->what() : "";
        if (!failure.empty() && failure != trouble)
            context.notices() << "vykeldev: " << printable(failure) << "; watching on\n";
        trouble = failure;
    }
}

ExitCode watchDevices(Context& context, const WatchOptions& options) {
    try {
        watchWhileRead(context, options);
        return ExitCode::Success;
    } catch (const Stopped&) { // as every watch ends that is read to its end
        return ExitCode::Stopped;
    }
}

} // namespace

void addWatchCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] =
        addCommand(app, chosen,
                   {"watch", "Shows the devices and then what changes", "watch --json",
                    "Ends with Ctrl-C, or, with exit code 0, when nobody reads its output any more.\n"
                    "Plug-ins that are registered while it watches are not seen."},
                   watchDevices, JsonOutput::Lines);
    addSeconds(command, "--interval", options.interval, "Seconds between two readings (default 0.5)", 0.01);
    addFormatOption(command, options.format);
}

} // namespace vykeldev
