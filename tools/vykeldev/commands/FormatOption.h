#ifndef VYKELDEV_COMMANDS_FORMATOPTION_H
#define VYKELDEV_COMMANDS_FORMATOPTION_H

#include <CLI/CLI.hpp>
#include <cstdint>

namespace vykeldev {

/// The option of all commands that show tokens. `format` must outlive the parsing.
inline void addFormatOption(CLI::App& command, std::uint32_t& format) {
    command.add_option("--format", format, "Which form of the token to show: 1 (default) or 2")
        ->check(CLI::IsMember({1, 2}))
        ->type_name("N");
}

} // namespace vykeldev

#endif
