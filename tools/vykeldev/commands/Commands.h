#ifndef VYKELDEV_COMMANDS_COMMANDS_H
#define VYKELDEV_COMMANDS_COMMANDS_H

#include <functional>
#include <iostream>
#include <string>

namespace CLI {
class App;
}

namespace vykeldev {

/// How the process ends. Scripts rely on these numbers.
enum class ExitCode { Success = 0, Error = 1, WrongUsage = 2, NothingListed = 3, Warnings = 4, Broken = 5 };

/// The parameters of all commands.
struct Context {
    std::string library;  ///< Path of the library to use, UTF-8.
    bool colour = false;  ///< Standard output is a terminal that shows colour.
    bool verbose = false; ///< Notices are wanted also when standard error is no terminal.
    bool quiet = false;   ///< Only errors go to standard error.

    /// Where everything but errors and results goes: standard error, or nowhere.
    std::ostream& notices() const {
        static std::ostream nowhere(nullptr);
        return quiet ? nowhere : std::cerr;
    }
};

/// What a command prints on standard output when it fails, beside the text on standard error.
enum class FailureOutput {
    None,
    Document, ///< The one JSON object that is all its output.
    Line      ///< A JSON object as its last line.
};

/// A command whose options are known.
struct Run {
    std::function<ExitCode(const Context&)> work; ///< Ends with an exit code or throws Failure.
    FailureOutput failureOutput = FailureOutput::None;
};

/// For a command that prints one object with --json.
constexpr FailureOutput documentIf(bool json) noexcept {
    return json ? FailureOutput::Document : FailureOutput::None;
}

/// For a command that prints one object a line with --json.
constexpr FailureOutput lineIf(bool json) noexcept {
    return json ? FailureOutput::Line : FailureOutput::None;
}

// Each command is one file with one of these: it describes the command and its options to `app` and, when the
// user gave the command, puts its work into `chosen`. `chosen` must outlive the parsing.
void addAliasCommand(CLI::App& app, Run& chosen);
void addAliasesCommand(CLI::App& app, Run& chosen);
void addCheckCommand(CLI::App& app, Run& chosen);
void addDoctorCommand(CLI::App& app, Run& chosen);
void addListCommand(CLI::App& app, Run& chosen);
void addPluginsCommand(CLI::App& app, Run& chosen);
void addRegisterCommand(CLI::App& app, Run& chosen);
void addRenumberCommand(CLI::App& app, Run& chosen);
void addSetupCommand(CLI::App& app, Run& chosen);
void addUnregisterCommand(CLI::App& app, Run& chosen);
void addWaitCommand(CLI::App& app, Run& chosen);
void addWatchCommand(CLI::App& app, Run& chosen);

} // namespace vykeldev

#endif
