#include "commands/Commands.h"
#include "machine/Registrations.h"
#include "system/DisplayText.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

namespace vykeldev {

void addUnregisterCommand(CLI::App& app, Run& chosen) {
    const auto name = std::make_shared<std::string>();
    CLI::App* const command = app.add_subcommand("unregister", "Removes the registration of a plug-in");
    const auto checkName = [](const std::string& text) {
        return isRegistrationName(text) ? std::string() : "no plug-in can have this name";
    };
    command->add_option("NAME", *name, "The name it is registered under")
        ->required()
        ->check(checkName)
        ->type_name("");
    command->callback([name, &chosen] {
        chosen = {[name](const Context&) {
            removeRegistration(*name);
            std::cout << "unregistered " << printable(*name) << '\n';
            return ExitCode::Success;
        }};
    });
}

} // namespace vykeldev
