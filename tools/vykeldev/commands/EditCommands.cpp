#include "commands/EditCommands.h"

#include "child/DeviceClient.h"
#include "commands/ChangeText.h"
#include "output/Failures.h"
#include "vykel/IDevice.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev {
namespace {

constexpr std::uint32_t shownFormat = 1; // of the tokens

struct EditOptions {
    DeviceEdit edit;
    std::string number;
    bool json = false;
};

ExitCode editNow(const Context& context, const EditOptions& options) {
    using Event = DeviceClient::Event;
    DeviceClient client({context.library, 0, 0, 0, 0, options.edit}, context);
    Json failure;
    try {
        const auto forever = DeviceClient::Clock::time_point::max();
        client.await(Event::Read, forever);
        client.await(Event::Done, forever);
    } catch (const Failure& thrown) {
        failure = thrown;
    }
    for (const DeviceChange& change : client.changes())
        std::cout << (options.json ? toJson(change, shownFormat) : toText(change, context.colour)) << '\n';
    if (!failure.is_null())
        throw failureFrom(failure);
    if (client.changes().empty()) {
        context.notices() << "vykeldev: no device has the number " << options.number
                          << (options.edit.token.empty() ? "" : " and this token") << '\n';
        return ExitCode::NothingListed;
    }
    if (options.edit.dryRun)
        context.notices() << "vykeldev: --dry-run: nothing was changed\n";
    return ExitCode::Success;
}

CLI::App& addCommand(CLI::App& app, Run& chosen, const char* name, const char* description,
                     const std::shared_ptr<EditOptions>& options) {
    CLI::App* const command = app.add_subcommand(name, description);
    command->add_option("NUMBER", options->number, "The devices' number, such as KEL3")
        ->required()
        ->check(numberFlaw)
        ->type_name("");
    command->add_flag("--json", options->json, "Prints one JSON object a line for each device");
    command->callback([options, &chosen] {
        options->edit.number = *numberIn(options->number);
        chosen = {[options](const Context& context) { return editNow(context, *options); },
                  lineIf(options->json)};
    });
    command->footer(
        "Refreshes the devices first, as list does. Exit codes: 0 done, 1 an error, 3 no such device.");
    return *command;
}

} // namespace

void addAliasCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<EditOptions>();
    CLI::App& command = addCommand(app, chosen, "alias", "Gives a device an alias", options);
    command.add_option("ALIAS", options->edit.alias, "The alias; an empty one removes it")
        ->required()
        ->type_name("");
    command.add_option("--token", options->edit.token, "The persistent token of the device that is meant")
        ->type_name("TEXT");
}

void addRenumberCommand(CLI::App& app, Run& chosen) {
    const auto options = std::make_shared<EditOptions>();
    CLI::App& command =
        addCommand(app, chosen, "renumber",
                   "Gives devices that share a number numbers of their own; the first one keeps it", options);
    command
        .add_option("--token", options->edit.token,
                    "The persistent token of the device that keeps the number")
        ->type_name("TEXT");
    command.add_flag("--dry-run", options->edit.dryRun, "Only shows what it would do");
}

} // namespace vykeldev
