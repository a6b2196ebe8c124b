#ifndef VYKELDEV_OUTPUT_COMMAND_H
#define VYKELDEV_OUTPUT_COMMAND_H

#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

/// What all commands have in common.
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

/// A check of an option's text: accepts numbers from `min` to `max` and nothing else, not even "nan". The
/// error says what is `expected`.
inline std::function<std::string(const std::string&)> inRange(double min, double max, const char* expected) {
    return [=](const std::string& text) {
        char* end = nullptr;
        const double value = std::strtod(text.c_str(), &end);
        const bool good = !text.empty() && *end == '\0' && value >= min && value <= max;
        return good ? std::string() : std::string(expected) + " expected, not '" + text + "'";
    };
}

} // namespace vykeldev

#endif
