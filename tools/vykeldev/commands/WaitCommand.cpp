#include "commands/Commands.h"
#include "support/Enumerator.h"
#include "support/NumberRange.h"
#include <algorithm>
#include <chrono>
#include <CLI/CLI.hpp>
#include <iostream>
#include <limits>
#include <memory>
#include <windows.h>

namespace vykeldev {
namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double secondsBetweenReadings = 0.05;

struct WaitOptions {
    std::uint32_t count = 1;
    double timeout = unlimited; // seconds
};

ExitCode waitForDevices(const Context& context, const WaitOptions& options) {
    using Clock = std::chrono::steady_clock;
    const Enumerator enumerator(context.library);
    const DeviceListHandle list = enumerator.makeList();
    const Clock::time_point start = Clock::now();
    for (;;) {
        if (list->isStale())
            refresh(*list);
        const std::uint32_t count = list->getCount();
        if (count >= options.count) {
            std::cout << count << (count == 1 ? " device\n" : " devices\n");
            return ExitCode::Success;
        }
        const double left = options.timeout - std::chrono::duration<double>(Clock::now() - start).count();
        if (!(left > 0)) {
            std::cerr << "vykeldev: time is over with " << count << " of " << options.count << " devices\n";
            return ExitCode::NothingListed;
        }
        Sleep(static_cast<DWORD>(1000 * std::min(left, secondsBetweenReadings)) + 1);
    }
}

} // namespace

void addWaitCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<WaitOptions>();
    CLI::App* const command = app.add_subcommand("wait", "Waits until devices are listed");
    command->add_option("--count", options->count, "How many (default 1)")
        ->check(inRange(1, unlimited, "at least 1 device"))
        ->type_name("N");
    command
        ->add_option("--timeout", options->timeout,
                     "Gives up, with exit code 3, after so many seconds (default: never)")
        ->check(inRange(0, unlimited, "0 seconds or more"))
        ->type_name("S");
    command->callback([options, &chosen] {
        chosen = [options](const Context& context) { return waitForDevices(context, *options); };
    });
    command->footer("Plug-ins that are registered while it waits are not seen.");
}

} // namespace vykeldev
