#include "commands/WaitCommand.h"

#include "child/DeviceClient.h"
#include "commands/SelectionOptions.h"
#include "output/Failures.h"
#include <algorithm>

namespace vykeldev {
namespace {

constexpr double secondsBetweenReadings = 0.05;
constexpr double minimumWait = 2; // for the first reading and for the end, whatever the limit is

struct WaitOptions : CommonOptions {
    std::uint32_t count = 1;
    double timeout = unlimited; // seconds
    Selection selection;
};

/// Reports a reading of enough devices, and waits until the client has unloaded the plug-ins.
ExitCode finish(Context& context, DeviceClient& client) {
    const Reading reading = client.reading();
    std::cout << reading.count << (reading.count == 1 ? " device\n" : " devices\n");
    client.next(timeAfter(minimumWait));
    if (!reading.failure)
        return ExitCode::Success;
    warn(context, *reading.failure);
    return ExitCode::Warnings;
}

ExitCode waitForDevices(Context& context, const WaitOptions& options) {
    using Event = DeviceClient::Event;
    const DeviceClient::Clock::time_point deadline = timeAfter(options.timeout);
    const auto selection = options.selection.isByName() ? std::optional(options.selection) : std::nullopt;
    DeviceClient client({context.library, selection, options.count, secondsBetweenReadings}, context);
    Event event = client.next(std::max(deadline, timeAfter(minimumWait)));
    for (; event == Event::Read; event = client.next(deadline)) {
        if (client.reading().count >= options.count)
            return finish(context, client);
        if (client.reading().failure)
            throw *client.reading().failure;
    }
    context.notices() << "vykeldev: time is over with " << client.reading().count << " of " << options.count
                      << " devices";
    if (const std::string obstacle = client.obstacle(); !obstacle.empty())
        context.notices() << typeable("; " + obstacle + "; 'vykeldev doctor' says more");
    context.notices() << '\n';
    return ExitCode::NothingListed;
}

} // namespace

void addWaitCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] =
        addCommand(app, chosen,
                   {"wait", "Waits until devices are listed", "wait --count 2 --timeout 10",
                    "Plug-ins that are registered while it waits are not seen.\n"
                    "Exit codes: 0 done, 1 an error, 3 time is over, 4 done, but the refresh failed."},
                   waitForDevices, JsonOutput::None);
    command.add_option("--count", options.count, "How many (default 1)")
        ->check(inRange(1, unlimited, "at least 1 device"))
        ->type_name("N");
    addSelectionOptions(command, options.selection);
    addSeconds(
        command, "--timeout", options.timeout,
        "Gives up, with exit code 3, after this many seconds (default: never; the first look may take 2 seconds)",
        0, unlimited);
}

} // namespace vykeldev
