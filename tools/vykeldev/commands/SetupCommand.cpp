#include "commands/SetupCommand.h"

#include "machine/Setup.h"
#include "output/Json.h"
#include <algorithm>

namespace vykeldev {
namespace {

struct SetupOptions : CommonOptions {
    bool check = false;
    bool resetRights = false;
};

std::string stateOf(const SetupItem& item, const SetupOptions& options) {
    return item.present ? "present" : options.check ? "missing" : "made";
}

void printText(const std::vector<SetupItem>& items, const SetupOptions& options) {
    for (const SetupItem& item : items)
        std::cout << stateOf(item, options) << ": " << describe(item) << '\n';
    for (std::size_t i = 1; options.resetRights && i < items.size(); ++i) // all but the key
        std::cout << "rights set: " << describe(items[i]) << '\n';
}

ExitCode setUp(Context& context, const SetupOptions& options) {
    const std::vector<SetupItem> items = options.check ? examineSetup() : completeSetup(options.resetRights);
    context.document.update({{"items", Json::array()}, {"rightsSet", options.resetRights}});
    for (const SetupItem& item : items)
        context.document["items"].push_back(
            {{"kind", item.kind}, {"place", item.place}, {"state", stateOf(item, options)}});
    if (!options.json)
        printText(items, options);
    const bool complete =
        std::all_of(items.begin(), items.end(), [](const SetupItem& item) { return item.present; });
    return complete || !options.check ? ExitCode::Success : ExitCode::Broken;
}

} // namespace

void addSetupCommand(CLI::App& app, Run& chosen) {
    const auto& [command, options] = addCommand(
        app, chosen,
        {"setup",
         "Prepares this machine, as administrator: makes the plug-ins' registry key, the lock files and their folder "
         "where they are missing",
         "setup --check"},
        setUp);
    CLI::Option* const check =
        command.add_flag("--check", options.check,
                         "Changes nothing; exit code 5 when one is missing. Does not look at rights");
    command
        .add_flag(
            "--reset-rights", options.resetRights,
            "Also gives the folders, the lock files and vykel.ini that are there the rights of new ones")
        ->excludes(check);
}

} // namespace vykeldev
