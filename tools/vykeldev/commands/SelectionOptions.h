#ifndef VYKELDEV_COMMANDS_SELECTIONOPTIONS_H
#define VYKELDEV_COMMANDS_SELECTIONOPTIONS_H

#include "child/Devices.h"
#include <CLI/CLI.hpp>

/// Options that several commands share. What they set must outlive the parsing.
namespace vykeldev {

/// The option of all commands that show tokens.
inline void addFormatOption(CLI::App& command, std::uint32_t& format) {
    command.add_option("--format", format, "Which form of the token to use: 1 (default) or 2")
        ->check(CLI::IsMember({1, 2}))
        ->type_name("N");
}

/// The options that name devices.
inline void addSelectionOptions(CLI::App& command, Selection& selection) {
    addFormatOption(command, selection.tokenFormat);
    command.add_option("--number", selection.number, "Only the device of this number, such as KEL3")
        ->check(numberFlaw)
        ->type_name("KELn");
    command.add_option("--alias", selection.alias, "Only devices of exactly this alias")->type_name("TEXT");
    command.add_option("--token", selection.token, "Only devices of exactly this token")->type_name("TEXT");
}

} // namespace vykeldev

#endif
