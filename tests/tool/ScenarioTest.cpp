// Runs the scenarios of the folder scenarios/. Its README.md explains how they are written.

#include "tool/Tool.h"
#include <sstream>

namespace vykeltest {
namespace {

/// One line of a scenario with the lines of text after it.
struct Step {
    std::string place;  ///< file and line
    std::string action; ///< the first word
    std::string rest;
    std::string text;               ///< the lines "|", each with its end
    std::vector<std::string> parts; ///< the lines "~"
    bool whole = false;             ///< there is a line "|"
    int exitCode = 0;               ///< the line "="
};

struct Scenario {
    std::string name;
    std::vector<Step> steps;
};

void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

/// Puts what {NAME} stands for in place of it: a byte in hexadecimal digits, or what depends on the build.
std::string expanded(std::string text, const std::string& folder) {
    for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + 1)) {
        const std::string name = text.substr(at + 1, text.find('}', at) - at - 1);
        const bool isByte =
            name.size() == 2 && name.find_first_not_of("0123456789ABCDEF") == std::string::npos;
        if (isByte || name == "folder" || name == "built" || name == ".so")
            text.replace(at, name.size() + 2,
                         isByte            ? std::string(1, static_cast<char>(std::stoi(name, nullptr, 16)))
                         : name == ".so"   ? pluginExtension
                         : name == "built" ? programFolder().string()
                                           : folder);
    }
    return text;
}

/// Takes "host " or "windows " off a line; false when the line is for the other build.
bool isForThisBuild(std::string& line) {
    for (const std::string& build : {std::string("host "), std::string("windows ")})
        if (line.rfind(build, 0) == 0) {
            line.erase(0, build.size());
            return (build == "windows ") == isWindows;
        }
    return true;
}

void addLine(Scenario& scenario, const std::string& line, const std::string& place) {
    const std::string rest = line.size() > 2 ? line.substr(2) : "";
    if (line[0] == '|' || line[0] == '~' || line[0] == '=') {
        Step& step = scenario.steps.back();
        step.whole = step.whole || line[0] == '|';
        if (line[0] == '|')
            step.text += rest + '\n';
        else if (line[0] == '~')
            step.parts.push_back(rest);
        else
            step.exitCode = std::stoi(rest);
    } else {
        const std::size_t blank = line.find(' ');
        const std::string after = blank == std::string::npos ? "" : line.substr(blank + 1);
        scenario.steps.push_back({place, line.substr(0, blank), after, "", {}});
    }
}

std::vector<Scenario> readScenarios() {
    std::vector<Scenario> scenarios;
    for (const auto& file : fs::directory_iterator(VYKEL_SCENARIOS)) {
        std::istringstream lines(file.path().extension() == ".txt" ? readText(file.path()) : "");
        int number = 0;
        for (std::string line; std::getline(lines, line);) {
            const std::string place = file.path().filename().string() + ':' + std::to_string(++number);
            if (line.rfind("## ", 0) == 0)
                scenarios.push_back(
                    {file.path().stem().string() + '_' + replaced(line.substr(3), " ", "_"), {}});
            else if (!line.empty() && line[0] != '#' && isForThisBuild(line))
                addLine(scenarios.back(), line, place);
        }
    }
    return scenarios;
}

class ScenarioTest : public ToolTest, public testing::WithParamInterface<Scenario> {
protected:
    void take(const Step& step) {
        std::istringstream words(step.rest);
        std::string name;
        std::string other;
        words >> name >> other;
        const fs::path path = folder / fs::u8path(name);
        const std::string text = expanded(step.text, folder.string());
        if (step.action == "$")
            runCommand(step, text);
        else if (step.action == "install")
            machine.install(name, other);
        else if (step.action == "copy")
            machine.copyLibrary(name, other);
        else if (step.action == "devices")
            setDevices(name, text);
        else if (step.action == "zoo")
            breakRule(name);
        else if (step.action == "write")
            writeFile(path, other == "cut" ? text.substr(0, text.size() - 1) : text);
        else if (step.action == "holds")
            EXPECT_EQ(readText(path), text);
        else if (step.action == "absent")
            EXPECT_FALSE(fs::exists(path));
        else if (step.action == "mkdir")
            fs::create_directories(path);
        else if (step.action == "remove")
            EXPECT_GT(fs::remove_all(path), 0u);
        else if (step.action == "key")
            machine.setPluginsKey(name == "there");
        else if (step.action == "set")
            setEnvironment(name.c_str(), expanded(other, folder.string()));
        else
            ADD_FAILURE() << "there is no step '" << step.action << "'";
    }

    void runCommand(const Step& step, const std::string& text) const {
        const std::string output = run(expanded(step.rest, folder.string()) + " 2>&1");
        const std::string end = "= " + std::to_string(step.exitCode);
        if (step.whole)
            EXPECT_EQ(output, text + end);
        else
            expectPart('\n' + output + '\n', '\n' + end + '\n');
        for (const std::string& part : step.parts)
            expectPart(output, expanded(part, folder.string()));
    }
};

TEST_P(ScenarioTest, Runs) {
    fs::current_path(folder);
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE(step.place + ": " + step.action + ' ' + step.rest);
        take(step);
    }
}

INSTANTIATE_TEST_SUITE_P(All, ScenarioTest, testing::ValuesIn(readScenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

} // namespace
} // namespace vykeltest
