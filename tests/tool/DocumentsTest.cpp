// The documents list what the tool checks, in its own words.

#include "support/Platform.h"
#include "support/TestFiles.h"
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace vykeltest {
namespace {

std::string document(const std::string& name) {
    return readFile(fs::path(VYKEL_DOCS) / name);
}

/// The table that the tool prints, as lines of columns.
std::vector<std::vector<std::string>> tableOf(const std::string& arguments) {
    std::vector<std::vector<std::string>> table;
    std::istringstream lines(runProgram("vykeldev", arguments).output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream columns(line.substr(0, line.find('\r')));
        table.emplace_back();
        for (std::string column; std::getline(columns, column, '\t');)
            table.back().push_back(column);
    }
    return table;
}

TEST(Documents, ListEveryFindingOfTheDoctor) {
    const std::string text = document("troubleshooting.md");
    std::string headings;
    for (const auto& row : tableOf("doctor --list-findings")) {
        const std::string heading = "\n### `" + row.at(0) + "` (" + row.at(1) + ")\n";
        EXPECT_NE(text.find(heading + '\n' + row.at(2) + "\n\n**What to do:** " + row.at(3) + '\n'),
                  std::string::npos)
            << heading;
        headings += heading;
    }
    for (std::size_t at = text.find("\n### `"); at != std::string::npos; at = text.find("\n### `", at + 1))
        EXPECT_NE(headings.find(text.substr(at, text.find('\n', at + 1) + 1 - at)), std::string::npos);
}

TEST(Documents, ListEveryRuleForPlugins) {
    std::string table = "\n| rule | kept when |\n|---|---|\n";
    for (const auto& row : tableOf("check --list-rules"))
        table += "| `" + row.at(0) + "` | " + row.at(1) + " |\n";
    EXPECT_NE(document("plugin-authors.md").find(table + '\n'), std::string::npos) << table;
}

} // namespace
} // namespace vykeltest
