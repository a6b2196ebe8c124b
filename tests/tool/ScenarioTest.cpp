// Runs the scenarios of the folder scenarios/. Its README.md explains how they are written.

#include "pellumkelddk/user/FileLock.h"
#include "tool/Tool.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <cctype>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <thread>
#if !defined(_WIN32)
#include <unistd.h>
#endif

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

/// What {NAME} stands for: a byte in hexadecimal digits, what depends on the build, or a text so many times.
std::optional<std::string> meaningOf(const std::string& name, const std::string& folder) {
    const auto isOnly = [](const std::string& text, const char* characters) {
        return !text.empty() && text.find_first_not_of(characters) == std::string::npos;
    };
    if (name == "folder" || name == "built" || name == ".so")
        return name == ".so" ? pluginExtension : name == "built" ? programFolder().string() : folder;
    if (name.size() == 2 && isOnly(name, "0123456789ABCDEF"))
        return std::string(1, static_cast<char>(std::stoi(name, nullptr, 16)));
    const std::string word = name.substr(0, name.find(' '));
    const std::string text = name.substr(std::min(word.size() + 1, name.size()));
    if (word == "host" || word == "windows")
        return (word == "windows") == isWindows ? text : "";
    if (!isOnly(word, "0123456789"))
        return std::nullopt;
    std::string all;
    for (int times = std::stoi(word); times > 0; --times)
        all += text;
    return all;
}

std::string expanded(std::string text, const std::string& folder) {
    for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at)) {
        const std::string name = text.substr(at + 1, text.find('}', at) - at - 1);
        const auto meaning = meaningOf(name, folder);
        if (meaning)
            text.replace(at, name.size() + 2, *meaning);
        at += meaning ? meaning->size() : 1;
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

/// The lines of a file with their numbers. Each line "use NAME" becomes the lines between "define NAME" and
/// an empty line.
std::vector<std::pair<int, std::string>> readLines(const fs::path& file) {
    static const std::regex gap("  +");
    std::istringstream text(readText(file));
    std::map<std::string, std::vector<std::string>> blocks;
    std::vector<std::string>* block = nullptr;
    std::vector<std::pair<int, std::string>> lines;
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        ++number;
        std::string rest = line;
        if (takeOff(rest, "define"))
            block = &blocks[rest];
        else if (block != nullptr && !line.empty())
            block->push_back(line);
        else if (isForThisBuild(rest) && takeOff(rest, "use")) {
            const std::vector<std::string> words(
                std::sregex_token_iterator(rest.begin(), rest.end(), gap, -1), {});
            for (std::string used : blocks.at(words[0])) {
                for (std::size_t i = 1; i < words.size(); ++i)
                    used = replaced(used, '{' + std::to_string(i) + '}', words[i]);
                lines.emplace_back(number, used);
            }
        } else {
            block = nullptr;
            lines.emplace_back(number, line);
        }
    }
    return lines;
}

void readScenarios(const fs::path& file, std::vector<Scenario>& scenarios) {
    Scenario first; // what each of the file begins with
    Scenario* scenario = &first;
    bool takesStep = false;
    for (auto& [number, line] : readLines(file)) {
        const bool isHere = isForThisBuild(line);
        if (line.rfind("## ", 0) == 0) {
            scenario = nullptr;
            if (isHere)
                scenario = &scenarios.emplace_back(
                    Scenario{file.stem().string() + '_' + line.substr(3), first.steps});
        } else if (scenario == nullptr || line.empty() || line[0] == '#')
            continue;
        else if (line.find_first_of("|~=") == 0) {
            if (takesStep && isHere)
                addTo(scenario->steps.back(), line);
        } else if ((takesStep = isHere))
            scenario->steps.push_back(
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

/// Whether this process may give files to another user.
bool isRoot() {
#if defined(_WIN32)
    return false;
#else
    return geteuid() == 0;
#endif
}

/// A file that this process has locked.
struct LockedFile {
    explicit LockedFile(const fs::path& path) : stream(vykel::openLockFile(path.string().c_str())) {
        vyfile::FileLockImpl(stream.get()).lock(); // until the stream ends
    }
    vykel::FileStream stream;
};

class ScenarioTest : public ToolTest, public testing::WithParamInterface<Scenario> {
protected:
    ScenarioTest() { fs::current_path(folder); }
    ~ScenarioTest() override {
        fs::current_path(programFolder());
        for (const std::string& name : variables)
            setEnvironment(name.c_str(), "");
    }

    void take(const Step& step) {
        std::istringstream words(expanded(step.rest, folder.string()));
        std::string name;
        std::string other;
        std::string third;
        words >> name >> other >> third;
        const fs::path path = folder / fs::u8path(name);
        const std::string text = expanded(step.text, folder.string());
        const std::string cut = text.substr(0, text.size() - (text.empty() ? 0 : 1));
        const std::map<std::string, std::function<void()>> actions = {
            {"$", [&] { runCommand("vykeldev", step, text); }},
            {"sh", [&] { runCommand("/bin/sh", step, text); }},
            {"json", [&] { expectJson(step, text); }},
            {"unchanged", [&] { EXPECT_EQ(within(path, files()), within(path, before)); }},
            {"install", [&] { machine.install(name, other); }},
            {"copy", [&] { machine.copyLibrary(name, other); }},
            {"registry", [&] { setValue(name, other, third == "cut", cut); }},
            {"patch", [&] { patch(path, other, third); }},
            {"resize", [&] { fs::resize_file(path, std::stoul(other)); }},
            {"link", [&] { fs::create_hard_link(path, folder / other); }},
            {"devices", [&] { setDevices(name, text); }},
            {"zoo", [&] { breakRule(name); }},
            {"write", [&] { writeFile(path, other == "cut" ? cut : text); }},
            {"holds", [&] { EXPECT_EQ(readText(path), text); }},
            {"absent", [&] { EXPECT_FALSE(fs::exists(path)); }},
            {"mkdir", [&] { fs::create_directories(path); }},
            {"remove", [&] { EXPECT_GT(fs::remove_all(path), 0u); }},
            // Wine keeps of the rights only that they are fewer than those of the folder above.
            {"restricted", [&] { EXPECT_LT(rightsSize(path), rightsSize(path.parent_path())); }},
            {"root", [] {}},
            {"key", [&] { machine.setPluginsKey(name == "there"); }},
            {"data", [&] { machine.setFolderName(machine.folderName() + '\\' + name); }},
            {"lock", [&] { locked.emplace(path); }},
            {"set", [&] { setEnvironment(variables.emplace_back(name).c_str(), other); }}};
        const auto found = actions.find(step.action);
        ASSERT_TRUE(found != actions.end()) << "there is no such step";
        found->second();
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
        const std::string arguments = expanded(step.rest, folder.string());
        output = run(arguments + (arguments.find("2>") == std::string::npos ? " 2>&1" : ""), program);
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

    /// Compares fields of the JSON that the last command wrote: a line for each element of a list.
    void expectJson(const Step& step, const std::string& text) const {
        const auto plain = [](const Json& value) {
            return value.is_string() ? value.get<std::string>() : value.is_null() ? "-" : value.dump();
        };
        std::istringstream words(step.rest);
        std::string field;
        words >> field;
        Json document; // notices may stand before and after it
        std::istringstream(output.substr(output.find('{'))) >> document;
        const Json& chosen = document.at(Json::json_pointer(field == "/" ? "" : field));
        std::vector<std::string> lines(chosen.is_array() ? chosen.size() : 1);
        if (step.rest == field)
            lines = {plain(chosen)};
        while (words >> field)
            for (std::size_t i = 0; i < lines.size(); ++i)
                lines[i] +=
                    (lines[i].empty() ? "" : " ") +
                    plain((chosen.is_array() ? chosen[i] : chosen).at(Json::json_pointer('/' + field)));
        std::string found;
        for (const std::string& line : lines)
            found += line + '\n';
        EXPECT_TRUE(found == text || !step.parts.empty()) << found;
        for (const std::string& part : step.parts)
            expectPart(found, expanded(part, folder.string()));
    }

    static void patch(const fs::path& path, const std::string& from, const std::string& to) {
        const std::string before = readFile(path);
        EXPECT_NE(before.find(from), std::string::npos) << "there is nothing to patch";
        writeFile(path, replaced(before, from, to));
    }

    /// Registers a plug-in by a value of any type; without a type, by none.
    void setValue(const std::string& name, const std::string& type, bool isCut, const std::string& text) {
        if (type.empty())
            return machine.registerPlugin(name, nullptr, nullptr, 0);
        const auto number = static_cast<DWORD>(std::stoul(type));
        // No 0 may follow what is cut: the system would store it, too.
        const WideString value = wide(text) + (isCut ? WCHAR{'x'} : WCHAR{0});
        machine.registerPlugin(name, &number, value.c_str(), (value.size() - isCut) * sizeof(WCHAR));
    }

    Files before;       ///< the last command
    std::string output; ///< of the last command
    std::optional<LockedFile> locked;
    std::vector<std::string> variables; ///< that the scenario set
};

TEST_P(ScenarioTest, Runs) {
    std::future<void> later;
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE(step.place + ": " + step.action + ' ' + step.rest);
        if (step.action == "root" && !isRoot())
            GTEST_SKIP() << "only root gives files to another user";
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
