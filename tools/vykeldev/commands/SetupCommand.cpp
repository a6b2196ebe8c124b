#include "commands/SetupCommand.h"

#include "machine/Setup.h"
#include "output/Json.h"

namespace vykeldev {
namespace {

struct SetupOptions : CommonOptions {
    bool check = false;
    bool resetRights = false;
};

ExitCode setUp(Context& context, const SetupOptions& options) {
    const std::vector<SetupItem> items = options.check ? examineSetup() : completeSetup(options.resetRights);
    context.document.update({{"items", Json::array()}, {"rightsSet", options.resetRights}});
    ExitCode result = ExitCode::Success;
    for (const SetupItem& item : items) {
        const char* const state = item.present ? "present" : options.check ? "missing" : "made";
        context.document["items"].push_back({{"kind", item.kind}, {"place", item.place}, {"state", state}});
        if (!options.json)
            std::cout << state << ": " << describe(item) << '\n';
        if (!item.present && options.check)
            result = ExitCode::Broken;
    }
    for (std::size_t i = 1; options.resetRights && !options.json && i < items.size(); ++i) // all but the key
        std::cout << "rights set: " << describe(items[i]) << '\n';
    return result;
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
