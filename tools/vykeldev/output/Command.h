#ifndef VYKELDEV_OUTPUT_COMMAND_H
#define VYKELDEV_OUTPUT_COMMAND_H

#include "output/Failures.h"
#include "system/Text.h"
#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

/// What all commands have in common.
namespace vykeldev {

/// How the process ends. Scripts rely on these numbers.
enum class ExitCode {
    Success = 0,
    Error = 1,
    WrongUsage = 2,
    NothingListed = 3,
    Warnings = 4,
    Broken = 5,
    Stopped = 130 ///< By Ctrl-C.
};

/// The parameters of all commands.
struct Context {
    std::string library;  ///< Path of the library to use, UTF-8.
    bool colour = false;  ///< Standard output is a terminal that shows colour.
    bool verbose = false; ///< Notices are wanted also when standard error is no terminal.
    bool quiet = false;   ///< Only errors go to standard error.
    /// What the command prints with --json, when that is one object; it adds its members to this one.
    Json document = {{"schemaVersion", 1}};

    /// Where everything but errors and results goes: standard error, or nowhere.
    std::ostream& notices() const {
        static std::ostream nowhere(nullptr);
        return quiet ? nowhere : std::cerr;
    }
};

/// Prints a warning on standard error, if the user wants more there than errors.
inline void warn(const Context& context, const Failure& failure) {
    printFailure(context.notices(), "vykeldev: warning: ", failure, context.verbose);
}

/// What a command prints on standard output with --json. Its failure is printed there, too, beside the text
/// on standard error.
enum class JsonOutput {
    None,
    Document, ///< Context::document; a failure is its last member.
    Lines     ///< Objects that the command prints itself; a failure is the last one.
};

/// A command whose options are known.
struct Run {
    std::function<ExitCode(Context&)> work; ///< Ends with an exit code or throws Failure.
    JsonOutput output = JsonOutput::None;
};

/// What the help says of a command.
struct CommandHelp {
    const char* name;
    const char* description;
    const char* example; ///< The arguments of a call, without the tool's name.
    const char* notes = "";
};

/// What the options of every command begin with.
struct CommonOptions {
    bool json = false; ///< Stays false in a command without this option.
};

/// The command and its options, which live as long as the command.
template <class Options>
struct Command {
    CLI::App& app;
    Options& options;
};

/// Adds a command. When the user gives it, `chosen` gets its work; `chosen` must outlive the parsing.
/// `output` says what --json prints; with None the command has no such option.
template <class Options>
Command<Options> addCommand(CLI::App& app, Run& chosen, const CommandHelp& help,
                            ExitCode (*work)(Context&, const Options&),
                            JsonOutput output = JsonOutput::Document) {
    const auto options = std::make_shared<Options>();
    CLI::App* const command = app.add_subcommand(help.name, help.description);
    command->footer(concat("Example:\n  vykeldev ", help.example, "\n\n", help.notes));
    if (output != JsonOutput::None)
        command->add_flag("--json", options->json,
                          output == JsonOutput::Lines ? "Prints JSON, one object a line"
                                                      : "Prints one JSON object");
    command->callback([=, &chosen] {
        chosen = {[=](Context& context) { return work(context, *options); },
                  options->json ? output : JsonOutput::None};
    });
    return {*command, *options};
}

/// Adds an argument that must be given and has no name but its own.
template <class Value>
CLI::Option* addArgument(CLI::App& command, const char* name, Value& value, const char* description) {
    return command.add_option(name, value, description)->required()->type_name("");
}

/// A check of an option's text: accepts numbers from `min` to `max` and nothing else, not even "nan". The
/// error says what is `expected`.
inline std::function<std::string(const std::string&)> inRange(double min, double max,
                                                              const std::string& expected) {
    return [=](const std::string& text) {
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        const bool good = !text.empty() && *end == '\0' && value >= min && value <= max;
        return good ? std::string() : expected + " expected, not '" + text + "'";
    };
}

constexpr double unlimited = std::numeric_limits<double>::infinity();

/// Adds an option for a time in seconds.
inline void addSeconds(CLI::App& command, const char* name, double& value, const char* description,
                       double min, double max = 86400) {
    const std::string expected =
        max < unlimited ? concat(min, " to ", max, " seconds") : concat(min, " seconds or more");
    command.add_option(name, value, description)->check(inRange(min, max, expected))->type_name("S");
}

} // namespace vykeldev

#endif
