#include "Application.h"

#include "check/CheckCommand.h"
#include "check/StageRun.h"
#include "child/DeviceTask.h"
#include "child/Enumerator.h"
#include "child/PreviewTask.h"
#include "child/Probe.h"
#include "commands/AliasesCommand.h"
#include "commands/EditCommands.h"
#include "commands/ListCommand.h"
#include "commands/RegistrationCommands.h"
#include "commands/SetupCommand.h"
#include "commands/WaitCommand.h"
#include "commands/WatchCommand.h"
#include "doctor/DoctorCommand.h"
#include "output/Failures.h"
#include "system/Console.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include <algorithm>
#include <new>
#include <sstream>

namespace vykeldev {
namespace {

constexpr const char* commonOptions =
    "\n\nEvery command also takes --library, --quiet and --verbose; 'vykeldev --help' explains them and the exit "
    "codes.";

constexpr const char* notes =
    R"(JSON is ASCII; other output is UTF-8. Colour is shown on a terminal, unless the environment variable NO_COLOR is set.

Exit codes:
  0    done; devices (or plug-ins) were listed
  1    an error, explained on standard error
  2    wrong usage
  3    nothing to list or to change, or 'wait' ran out of time
  4    warnings only, such as a refresh that failed but left devices
  5    something is broken; 'setup --check': something is missing
  130  ended by Ctrl-C)";

int toInteger(ExitCode code) noexcept {
    return static_cast<int>(code);
}

/// Runs a command, and prints its document. When it fails, those who read JSON get the failure as an object.
ExitCode runChosen(const Run& chosen, Context& context) {
    try {
        if (context.library.empty())
            context.library = defaultLibraryPath();
        const ExitCode result = chosen.work(context);
        if (chosen.output == JsonOutput::Document)
            std::cout << textOf(context.document) << '\n';
        return result;
    } catch (...) {
        context.document["error"] = currentFailure();
        if (chosen.output != JsonOutput::None)
            std::cout << textOf(context.document, chosen.output == JsonOutput::Lines ? -1 : 2) << '\n';
        throw;
    }
}

/// `result`, once all output is written. Throws Failure.
int flushed(int result) {
    if (!std::cout.flush())
        throw Failure("standard output cannot be written", "", "Is the disk full, or has the reader gone?");
    return result;
}

/// A text of the parser with lines as long as a terminal's; what stands in a column stays there.
std::string wrapped(const std::string& text) {
    constexpr std::size_t width = 80;
    std::istringstream lines(text);
    std::string result;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t first = line.find_first_not_of(' ');
        const std::size_t gap = line.find("  ", first); // before what is explained
        const std::size_t column = gap == std::string::npos ? first : line.find_first_not_of(' ', gap);
        for (std::size_t end = 0; line.size() > width; line.replace(0, end + 1, column, ' ')) {
            end = line.rfind(' ', width);
            if (end == std::string::npos || end <= column)
                break; // one long word
            result += line.substr(0, end) + '\n';
        }
        result += line + '\n';
    }
    return result;
}

/// Prints why the parsing ended: an error, or --help or --version.
int endOfParsing(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> words = app.remaining(true);
    const auto isCode = [&](CLI::ExitCodes code) { return error.get_exit_code() == static_cast<int>(code); };
    const bool lacksCommand = isCode(CLI::ExitCodes::RequiredError) && app.get_subcommands().empty();
    std::ostringstream help;
    std::ostringstream text;
    int code = 0;
    // The parser misses a command before it sees the word that is none, and turns several words round.
    if (!words.empty() && (lacksCommand || isCode(CLI::ExitCodes::ExtrasError)))
        code = app.exit(CLI::ExtrasError({words.rbegin(), words.rend()}), help, text);
    else
        code = app.exit(error, help, text);
    std::cout << wrapped(help.str());
    if (code == 0)
        return flushed(0);
    std::cerr << "vykeldev: error: " << printable(text.str(), WCHAR{'\n'});
    return toInteger(ExitCode::WrongUsage);
}

/// The arguments, with --help in place of the command help or of none.
std::vector<std::string> withHelp(std::vector<std::string> arguments) {
    if (!arguments.empty() && arguments[0] != "help")
        return arguments;
    if (!arguments.empty())
        arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
    return arguments;
}

int runParsed(std::vector<std::string> arguments, Context& context) {
    CLI::App app("Lists the devices that the VY-KEL enumerator plug-ins of this machine see.", "vykeldev");
    app.allow_windows_style_options(false); // a path may begin with a slash
    app.set_version_flag("-V,--version", "vykeldev " VYKELDEV_VERSION);
    app.add_option("--library", context.library,
                   "The vykeldevenum library to use (default: beside this tool)")
        ->type_name("PATH");
    app.add_flag(
        "-v,--verbose", context.verbose,
        "Says what a command waits for, also when standard error is no terminal, and where an error was "
        "raised");
    app.add_flag("-q,--quiet", context.quiet, "Writes nothing to standard error but errors");
    app.require_subcommand(1);
    app.fallthrough();

    Run chosen;
    for (const auto add : {addAliasCommand, addAliasesCommand, addCheckCommand, addDoctorCommand,
                           addListCommand, addPluginsCommand, addRegisterCommand, addRenumberCommand,
                           addSetupCommand, addUnregisterCommand, addWaitCommand, addWatchCommand})
        add(app, chosen);
    for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
        command->footer(command->get_footer() + commonOptions);
    app.footer(notes);
    std::reverse(arguments.begin(), arguments.end()); // the parser takes them from the end
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return endOfParsing(app, error);
    }
    return flushed(toInteger(runChosen(chosen, context)));
}

} // namespace

int runApplication(const std::vector<std::string>& arguments) noexcept {
    const Console console;
    Context context;
    context.colour = console.colourOnOutput;
    try {
        if (runRequestedTask(arguments, {&previewTask, &check::checkRuleTask, &deviceTask, &probeTask}))
            return toInteger(ExitCode::Success);
        const StopRequest stopRequest;
        return runParsed(withHelp(arguments), context);
    } catch (const Stopped& stopped) {
        std::cerr << "vykeldev: " << stopped.what() << '\n';
        return toInteger(ExitCode::Stopped);
    } catch (...) {
        try {
            printFailure(std::cerr,
                         console.colourOnError ? "\x1b[1;31mvykeldev: error:\x1b[0m " : "vykeldev: error: ",
                         currentFailure(), context.verbose);
        } catch (const ConversionError& error) { // the message itself cannot be converted
            std::cerr << "vykeldev: error: " << error.what() << "\n  what to do: " << freeMemory << '\n';
        } catch (const std::bad_alloc&) {
            std::cerr << "vykeldev: error: memory is exhausted\n  what to do: " << freeMemory << '\n';
        }
    }
    return toInteger(ExitCode::Error);
}

} // namespace vykeldev
