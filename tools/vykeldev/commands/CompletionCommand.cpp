#include "commands/Commands.h"
#include "support/Text.h"
#include <CLI/CLI.hpp>
#include <iostream>
#include <string>
#include <vector>

namespace vykeldev {
namespace {

using Words = std::vector<std::string>;

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

void addOptions(const CLI::App& app, Words& words) {
    for (const CLI::Option* const option : app.get_options()) {
        if (option->get_group().empty()) // hidden
            continue;
        for (const std::string& name : option->get_lnames())
            words.push_back("--" + name);
        for (const std::string& name : option->get_snames())
            words.push_back("-" + name);
    }
}

/// What the user may type after a command: its own commands and options, and those options that every command
/// takes.
Words wordsOf(const CLI::App& app) {
    Words words;
    for (const CLI::App* const command : commandsOf(app))
        words.push_back(command->get_name());
    addOptions(app, words);
    if (app.get_parent() != nullptr)
        addOptions(*app.get_parent(), words);
    return words;
}

void printBash(const CLI::App& app) {
    std::cout << "_vykeldev() {\n  local word words='" << joined(wordsOf(app), " ")
              << "'\n"
                 "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
                 "    case $word in\n";
    for (const CLI::App* const command : commandsOf(app))
        std::cout << "      " << command->get_name() << ") words='" << joined(wordsOf(*command), " ")
                  << "'; break ;;\n";
    std::cout << "    esac\n"
                 "  done\n"
                 "  COMPREPLY=($(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
                 "}\n"
                 "complete -o default -F _vykeldev vykeldev vykeldev.exe\n";
}

void printPowerShell(const CLI::App& app) {
    const auto line = [](const std::string& command, const CLI::App& its) {
        std::cout << "        '" << command << "' = '" << joined(wordsOf(its), "', '") << "'\n";
    };
    std::cout << "Register-ArgumentCompleter -Native -CommandName vykeldev, vykeldev.exe -ScriptBlock {\n"
                 "    param($word, $line, $position)\n"
                 "    $words = @{\n";
    line("", app);
    for (const CLI::App* const command : commandsOf(app))
        line(command->get_name(), *command);
    std::cout
        << "    }\n"
           "    $command = $line.CommandElements | Select-Object -Skip 1 | ForEach-Object { \"$_\" } |\n"
           "        Where-Object { $words.ContainsKey($_) } | Select-Object -First 1\n"
           "    $words[\"$command\"] | Where-Object { $_ -like \"$word*\" } | ForEach-Object {\n"
           "        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)\n"
           "    }\n"
           "}\n";
}

} // namespace

void addCompletionCommand(CLI::App& app, Run& chosen) {
    CLI::App* const command =
        app.add_subcommand("completion", "Prints a script that completes this tool's commands in a shell");
    command->require_subcommand(1);
    command->footer("Load it where the shell starts:\n"
                    "  bash        eval \"$(vykeldev completion bash | tr -d '\\r')\"\n"
                    "  PowerShell  vykeldev completion powershell | Out-String | Invoke-Expression");
    const auto add = [&](const char* shell, const char* description, void (*print)(const CLI::App&)) {
        command->add_subcommand(shell, description)->callback([print, &app, &chosen] {
            chosen = {[print, &app](const Context&) {
                print(app);
                return ExitCode::Success;
            }};
        });
    };
    add("bash", "For bash", printBash);
    add("powershell", "For PowerShell", printPowerShell);
}

} // namespace vykeldev
