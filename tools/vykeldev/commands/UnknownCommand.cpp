#include "commands/UnknownCommand.h"

#include "support/DisplayText.h"
#include "support/Text.h"
#include <algorithm>
#include <CLI/CLI.hpp>
#include <iostream>
#include <numeric>
#include <string>
#include <vector>

namespace vykeldev {
namespace {

/// How many letters must be added, removed or replaced to make one text of the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1); // the distances of a beginning of `from` to all of `to`
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (const char letter : from) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 0; i < to.size(); ++i) {
            const std::size_t replaced = diagonal + (letter == to[i] ? 0 : 1);
            diagonal = row[i + 1];
            row[i + 1] = std::min({replaced, diagonal + 1, row[i] + 1});
        }
    }
    return row.back();
}

/// The command whose name is at most two edits away, or an empty text. Of two that are as near, the one with
/// the same first letter.
std::string nearestCommand(const CLI::App& app, const std::string& word) {
    std::size_t best = 6;
    std::string nearest;
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
        const std::string name = command->get_name();
        const std::size_t distance = 2 * editDistance(word, name) + (word[0] != name[0] ? 1 : 0);
        if (distance < best) {
            best = distance;
            nearest = name;
        }
    }
    return nearest;
}

/// Whether a command that has commands of its own was given without one of them.
bool lacksCommand(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    const auto all = app.get_subcommands([](const CLI::App*) { return true; });
    return chosen.empty() ? !all.empty() : lacksCommand(*chosen.front());
}

} // namespace

bool explainUnknownCommand(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining(true);
    const auto word = std::find_if(words.begin(), words.end(),
                                   [](const std::string& text) { return !text.empty() && text[0] != '-'; });
    if (word == words.end() || !lacksCommand(app))
        return false;
    const std::string nearest = app.get_subcommands().empty() ? nearestCommand(app, *word) : "";
    std::cerr << "There is no command '" << printable(*word) << "'"
              << (nearest.empty() ? "" : "; did you mean '" + nearest + "'?")
              << "\nRun with --help for more information.\n";
    return true;
}

bool explainUnexpectedWords(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining(true);
    if (words.size() < 2)
        return false;
    std::cerr << "The following arguments were not expected: " << printable(joined(words, " "))
              << "\nPut quotes around a text with blanks. Run with --help for more information.\n";
    return true;
}

} // namespace vykeldev
