// Runs the scenarios of the folder scenarios/. Its README.md explains how they are written.

#include "pellumkelddk/user/FileLock.h"
#include "tool/Tool.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <cctype>
#include <chrono>
#include <future>
#include <map>
#include <sstream>
#include <thread>

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
    bool isSoon = false;
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

/// Takes a word and a blank off the line's beginning; false when it begins with something else.
bool takeOff(std::string& line, const std::string& word) {
    const bool found = line.rfind(word + ' ', 0) == 0;
    line.erase(0, found ? word.size() + 1 : 0);
    return found;
}

bool isForThisBuild(std::string& line) {
    return takeOff(line, "host") ? !isWindows : takeOff(line, "windows") ? isWindows : true;
}

/// Adds to a step one of the lines after it.
void addTo(Step& step, const std::string& line) {
    const std::string rest = line.size() > 2 ? line.substr(2) : "";
    step.whole = step.whole || line[0] == '|';
    if (line[0] == '|')
        step.text += rest + '\n';
    else if (line[0] == '~')
        step.parts.push_back(rest);
    else
        step.exitCode = std::stoi(rest);
}

Step makeStep(std::string line, const std::string& place) {
    Step step;
    step.place = place;
    step.isSoon = takeOff(line, "soon");
    step.action = line.substr(0, line.find(' '));
    step.rest = line.substr(std::min(line.size(), step.action.size() + 1));
    return step;
}

void readScenarios(const fs::path& file, std::vector<Scenario>& scenarios) {
    std::istringstream lines(readText(file));
    bool takesScenario = false;
    bool takesStep = false;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const bool isHere = isForThisBuild(line);
        if (line.rfind("## ", 0) == 0) {
            takesScenario = isHere;
            if (isHere)
                scenarios.push_back({file.stem().string() + '_' + line.substr(3), {}});
        } else if (!takesScenario || line.empty() || line[0] == '#')
            continue;
        else if (line.find_first_of("|~=") == 0) {
            if (takesStep && isHere)
                addTo(scenarios.back().steps.back(), line);
        } else if ((takesStep = isHere))
            scenarios.back().steps.push_back(
                makeStep(line, file.filename().string() + ':' + std::to_string(number)));
    }
}

std::vector<Scenario> readScenarios() {
    std::vector<Scenario> scenarios;
    for (const auto& file : fs::directory_iterator(VYKEL_SCENARIOS))
        if (file.path().extension() == ".txt")
            readScenarios(file.path(), scenarios);
    return scenarios;
}

/// The scenario's name as far as the name of a test can have it.
std::string testName(const testing::TestParamInfo<Scenario>& scenario) {
    std::string name = scenario.param.name;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

/// When each file of the machine was written last, and its size.
using Files = std::map<fs::path, std::pair<fs::file_time_type, std::uintmax_t>>;

/// Only the file or those in the folder.
Files within(const fs::path& path, Files files) {
    for (auto each = files.begin(); each != files.end();)
        each = *each->first.lexically_relative(path).begin() == ".." ? files.erase(each) : std::next(each);
    return files;
}

/// Nothing that a command writes may colour, ring or turn the text of a terminal.
bool hasControls(const std::string& text) {
    for (const char* const control : {"\x7F", "\xC2\x9B", "\xE2\x80\xAE", "\xE2\x81"})
        if (text.find(control) != std::string::npos)
            return true;
    return std::any_of(text.begin(), text.end(), [](char c) { return c >= 0 && c < ' ' && c != '\n'; });
}

/// The size of the list of who may do what with a folder; 0 on the host.
DWORD rightsSize([[maybe_unused]] const fs::path& folder) {
    DWORD size = 0;
#if defined(_WIN32)
    GetFileSecurityW(folder.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
#endif
    return size;
}

class ScenarioTest : public ToolTest, public testing::WithParamInterface<Scenario> {
protected:
    ScenarioTest() { fs::current_path(folder); }
    ~ScenarioTest() override {
        fs::current_path(programFolder());
        for (const std::string& name : variables)
            setEnvironment(name.c_str(), "");
    }

    void take(const Step& step) {
        std::istringstream words(step.rest);
        std::string name;
        std::string other;
        words >> name >> other;
        const fs::path path = folder / fs::u8path(name);
        const std::string text = expanded(step.text, folder.string());
        if (step.action == "$")
            runCommand("vykeldev", step, text);
        else if (step.action == "sh")
            runCommand("/bin/sh", step, text);
        else if (step.action == "unchanged")
            EXPECT_EQ(within(path, files()), within(path, before));
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
        else if (step.action == "restricted")
            EXPECT_LT(rightsSize(path), rightsSize(path.parent_path())); // Wine keeps no more of them
        else if (step.action == "key")
            machine.setPluginsKey(name == "there");
        else if (step.action == "data")
            machine.setFolderName(machine.folderName() + '\\' + name);
        else if (step.action == "lock") {
            locked = vykel::openLockFile(path.string().c_str());
            vyfile::FileLockImpl(locked.get()).lock(); // until the stream ends
        } else if (step.action == "set")
            setEnvironment(variables.emplace_back(name).c_str(), expanded(other, folder.string()));
        else
            ADD_FAILURE() << "there is no step '" << step.action << "'";
    }

    Files files() const {
        Files found;
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            if (entry.is_regular_file())
                found[entry.path()] = {entry.last_write_time(), entry.file_size()};
        return found;
    }

    void runCommand(const char* program, const Step& step, const std::string& text) {
        before = files();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(50);
        const std::string output = run(expanded(step.rest, folder.string()) + " 2>&1", program);
        EXPECT_LT(std::chrono::steady_clock::now(), deadline);
        EXPECT_FALSE(hasControls(output)) << output;
        const std::string end = "= " + std::to_string(step.exitCode);
        if (step.whole)
            EXPECT_EQ(output, text + end);
        else
            expectPart('\n' + output + '\n', '\n' + end + '\n');
        for (const std::string& part : step.parts)
            expectPart(output, expanded(part, folder.string()));
    }

    Files before; ///< the last command
    vykel::FileStream locked;
    std::vector<std::string> variables; ///< that the scenario set
};

TEST_P(ScenarioTest, Runs) {
    std::future<void> later;
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE(step.place + ": " + step.action + ' ' + step.rest);
        if (step.isSoon)
            later = std::async(std::launch::async, [this, &step] {
                std::this_thread::sleep_for(std::chrono::milliseconds(500));
                take(step);
            });
        else
            take(step);
    }
}

INSTANTIATE_TEST_SUITE_P(All, ScenarioTest, testing::ValuesIn(readScenarios()), testName);

} // namespace
} // namespace vykeltest
