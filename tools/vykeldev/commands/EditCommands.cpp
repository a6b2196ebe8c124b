#include "commands/EditCommands.h"

#include "child/DeviceClient.h"
#include "commands/ChangeText.h"

namespace vykeldev {
namespace {

constexpr std::uint32_t shownFormat = 1; // of the tokens

struct EditOptions : CommonOptions {
    DeviceEdit edit;
    std::string number;
};

ExitCode editNow(Context& context, const EditOptions& options) {
    DeviceEdit edit = options.edit;
    edit.number = *numberIn(options.number);
    bool isFound = false;
    const auto show = [&](const DeviceChange& change) {
        isFound = true;
        std::cout << (options.json ? textOf(toDocument(change, shownFormat), -1)
                                   : toText(change, context.colour))
                  << '\n';
    };
    DeviceClient client({context.library, std::nullopt, 0, 0, edit}, context, show);
    while (client.next(DeviceClient::Clock::time_point::max()) != DeviceClient::Event::Done) {
    }
    if (!isFound) {
        context.notices() << "vykeldev: no device has the number " << options.number
                          << (edit.token.empty() ? "" : " and this token") << '\n';
        return ExitCode::NothingListed;
    }
    if (edit.dryRun)
        context.notices() << "vykeldev: --dry-run: nothing was changed\n";
    return ExitCode::Success;
}

Command<EditOptions> addEditCommand(CLI::App& app, Run& chosen, const CommandHelp& help) {
    const auto command = addCommand(app, chosen, help, editNow, JsonOutput::Lines);
    addArgument(command.app, "NUMBER", command.options.number, "The devices' number, such as KEL3")
        ->check(numberFlaw);
    return command;
}

constexpr const char* notes =
    "Refreshes the devices first, as list does. Exit codes: 0 done, 1 an error, 3 no such device.";

} // namespace

void addAliasCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] =
        addEditCommand(app, chosen, {"alias", "Gives a device an alias", "alias KEL3 \"Main valve\"", notes});
    addArgument(command, "ALIAS", options.edit.alias, "The alias; an empty one removes it");
    command.add_option("--token", options.edit.token, "The persistent token of the device that is meant")
        ->type_name("TEXT");
}

void addRenumberCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addEditCommand(
        app, chosen,
        {"renumber", "Gives devices that share a number numbers of their own; the first one keeps it",
         "renumber KEL2 --dry-run", notes});
    command
        .add_option("--token", options.edit.token, "The persistent token of the device that keeps the number")
        ->type_name("TEXT");
    command.add_flag("--dry-run", options.edit.dryRun, "Only shows what it would do");
}

} // namespace vykeldev
