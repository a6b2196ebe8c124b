#include "support/Machine.h"
#include "support/TestFiles.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

namespace vykeltest {
namespace {

using Json = nlohmann::json;

const bool isWindows = std::string(pluginExtension) == ".dll";

std::string textOf(const fs::path& path) {
    std::ifstream file(path); // with line ends as the system writes them
    return {std::istreambuf_iterator<char>(file), {}};
}

/// `vykeldev check` with these arguments.
ProgramResult check(const std::string& arguments) {
    return runProgram("vykeldev", "check " + arguments);
}

/// A folder and a state file for the plug-in of one test.
class CheckTest : public testing::Test {
protected:
    CheckTest() {
        fs::create_directories(folder);
        writeFile(stateFile, untouched);
        setEnvironment("VYKEL_ZOO_STATE", stateFile.string());
        setEnvironment("VYKEL_ZOO_FAULT", "");
        if (const char* const windows = std::getenv("ProgramData")) // there a child sees no machine but this
            fs::create_directories(fs::path(windows) / "Morvance" / "VY-KEL");
    }
    ~CheckTest() override { fs::remove_all(folder); }

    static std::string quoted(const fs::path& path) { return " \"" + path.string() + "\""; }
    static std::string library(const std::string& name) {
        return quoted(programFolder() / (name + pluginExtension));
    }

    static constexpr const char* untouched = "7\nPump\n";
    Machine machine;
    fs::path folder = fs::temp_directory_path() / ("vykel-check-" + std::to_string(processId()));
    fs::path stateFile = folder / "state";
};

struct Animal {
    const char* fault; ///< Of the zoo plug-in; or another file.
    const char* rule;
    const char* result;
    const char* observed; ///< Part of what is observed.
};

void PrintTo(const Animal& animal, std::ostream* out) {
    *out << animal.fault;
}

constexpr Animal animals[] = {
    {"no library", "library-loads", "failed", "system error"},
    {"zoo_plugin_without_finalize", "entry-points", "failed", "not exported: vykel_finalizePlugin"},
    {"refuses", "initialises", "warning", "refused with -52003"},
    {"initialises-twice", "reload", "failed", "in round 2 refused with -52003"},
    {"no-list", "new-list", "warning", "answered -52003"},
    {"null-list", "new-list", "failed", "stored no list"},
    {"one-list", "new-list", "failed", "the same list"},
    {"any-interface-version", "interface-version", "warning", "accepted with 0"},
    {"full-from-the-start", "empty-before-refresh", "warning", "has 2 devices"},
    {"stays-attached", "attach-detach", "failed", "refused it with -52005 in round 2"},
    {"crashes-attached", "attach-detach", "failed", "attach and detach, again"},
    {"crashes-unloading", "reload", "failed", "loading and unloading"},
    {"leaks-attachments", "attach-detach", "failed", "tokens attached and detached left"},
    {"crashes", "refresh", "failed", " in: refresh"},
    {"hangs", "refresh", "failed", "no progress for 5000 ms in: refresh"},
    {"exits", "refresh", "failed", "exit code 0 in: refresh"},
    {"fails", "refresh", "warning", "left the code -52003"},
    {"counts-down", "refresh", "failed", "getCount changed from 2 to 1"},
    {"slow-stale", "stale-cheap", "warning", "microseconds"},
    {"always-stale", "stale-settles", "warning", "three refreshes"},
    {"null-device", "devices", "failed", "getDevice(1) of 2 answered null"},
    {"refuses-device", "devices", "warning", "left the code -52003"},
    {"any-index", "index-beyond", "failed", "getDevice(2) of 2 answered a device"},
    {"last-index", "index-beyond", "failed", "getDevice(4294967295) of 2 answered a device"},
    {"silent-index", "index-beyond", "failed", "null and left the code 0"},
    {"any-device-version", "minimum-version", "warning", "at least 3, was returned"},
    {"null-token", "token-present", "failed", "device 0 in format 2 is null"},
    {"changing-token", "token-stable", "failed", "'zoo/device "},
    {"refresh-token", "token-stable", "failed", "the tokens differ each time"},
    {"process-token", "token-stable", "failed", "is missing in the next"},
    {"one-object", "devices-stay", "failed", "became 'zoo/device 1'"},
    {"counts-lists", "devices-stay", "failed", "sort key 2"},
    {"latin-1-token", "texts-utf8", "failed", "getPersistentToken of device 0"},
    {"forgets-numbers", "number-kept", "failed", "set to '8', and in a new process it is '7'"},
    {"one-token", "number-kept", "skipped", "no device with a token of its own"},
    {"refuses-numbers", "number-kept", "warning", "refused with -52003"},
    {"one-buffer", "texts-stay", "failed", "became 'zoo/device 1'"},
    {"crashes-numbering", "number-kept", "failed", "in: setNumber"},
    {"caches-aliases", "alias-kept", "failed", "read from another list it is"},
    {"cuts-aliases", "alias-kept", "failed", "read from the same device it is 'vyk'"},
    {"replaces-errors", "first-error-wins", "failed", "found the code -99 and left -52005"},
    {"clears-codes", "first-error-wins", "failed", "refresh found the code -99 and left 0"},
    {"keeps-warnings", "first-error-wins", "failed", "found the code 99 and left 99"},
    {"wears-out", "release-frees", "failed", "list 501: refresh left the code -52003"},
    {"leaks-lists", "release-frees", "failed", " KiB and 0 handles"},
#if !defined(_WIN32) // Wine does not count handles
    {"leaks-handles", "release-frees", "failed", " and 125 handles"},
#else
    {"ends-by-foreign-exception", "no-exception", "failed", "left refresh and ended the process"},
#endif
    {"one-thread", "threads", "failed", "on another thread"},
    {"fills-small-blocks", "status-guard", "failed", "getDevice changed the block"},
    {"throws", "no-exception", "failed", "getVersion: zoo"},
    {"throws-own-type", "no-exception", "failed", "left refresh: of no standard type (seen in rule"},
};

class ZooTest : public CheckTest, public testing::WithParamInterface<Animal> {};

TEST_P(ZooTest, BreaksItsRuleAndNoOtherThatIsChecked) {
    const Animal animal = GetParam();
    const std::string fault = animal.fault;
    const std::string expected = animal.result;
    std::string plugin = library("zoo_plugin");
    if (fault == "no library")
        plugin = quoted(stateFile);
    else if (fault.rfind("zoo_plugin", 0) == 0)
        plugin = library(fault);
    setEnvironment("VYKEL_ZOO_FAULT", fault);
    // Under Wine, where processes take long, only that rule and those that it needs are checked.
    const std::string rules = isWindows ? " --rule " + std::string(animal.rule) : "";
    const ProgramResult run =
        check("--json --timeout " + std::string(fault == "hangs" ? "5" : "50") + rules + plugin);
    EXPECT_EQ(run.exitCode, expected == "failed" ? 5 : expected == "warning" ? 4 : 0) << run.output;
    const Json report = Json::parse(run.output);
    EXPECT_EQ(report["result"], expected == "skipped" ? "passed" : expected);
    for (const Json& rule : report["rules"]) {
        const std::string result = rule["result"];
        if (rule["id"] != animal.rule) {
            EXPECT_TRUE(result == "passed" || result == "skipped") << rule;
            continue;
        }
        EXPECT_EQ(result, expected);
        EXPECT_NE(rule["observed"].get<std::string>().find(animal.observed), std::string::npos) << rule;
    }
    const bool lost = run.output.find("'Pump', could not be put back") != std::string::npos;
    EXPECT_EQ(textOf(stateFile) == untouched, !lost);
}

INSTANTIATE_TEST_SUITE_P(All, ZooTest, testing::ValuesIn(animals), [](const auto& information) {
    std::string name = information.param.fault;
    for (char& character : name)
        character = std::isalnum(static_cast<unsigned char>(character)) != 0 ? character : '_';
    return name;
});

TEST_F(CheckTest, TheSimulatedPluginPassesAndIsLeftAsItWas) {
    const fs::path copy = folder / ("left" + std::string(pluginExtension));
    fs::copy_file(programFolder() / ("simulated" + std::string(pluginExtension)), copy);
    const std::string devices =
        "token=a number=4 alias=\"Pump\"\ntoken=b version=2 alias=\"\" number=1\ntoken=c\n";
    writeFile(folder / "left.devices", devices);
    const ProgramResult run = check("--timeout 50" + quoted(copy));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find(" passed, 0 failed, 0 with warnings, 0 skipped"), std::string::npos)
        << run.output;
    EXPECT_EQ(readFile(folder / "left.devices"), devices);
}

TEST_F(CheckTest, ReportsEverythingAlsoToABuildServer) {
    setEnvironment("VYKEL_ZOO_FAULT", "latin-1-token,always-stale");
    const fs::path junit = folder / "junit.xml";
    const ProgramResult run =
        check("--json --timeout 50 --read-only --junit" + quoted(junit) + library("zoo_plugin"));
    EXPECT_EQ(run.exitCode, 5);
    const Json report = Json::parse(run.output);
    const std::size_t rules = report["rules"].size();
    EXPECT_EQ(report["result"], "failed");
    EXPECT_EQ(report["summary"],
              Json({{"passed", rules - 4}, {"failed", 1}, {"warning", 1}, {"skipped", 2}}));
    const std::string xml = readFile(junit);
    for (const std::string& part :
         {"tests=\"" + std::to_string(rules) + "\" failures=\"1\" errors=\"0\" skipped=\"2\"",
          std::string(
              "<failure message=\"getPersistentToken of device 0 is not valid UTF-8: '&lt;Ger\xEF\xBF\xBD"),
          std::string("<system-out>warning: the list is stale right after"),
          std::string("name=\"alias-kept\" time=\"0.000\"><skipped message=\"left out by --read-only\"/>")})
        EXPECT_NE(xml.find(part), std::string::npos) << part << xml;
}

#if !defined(_WIN32) // where a plug-in cannot press its checker's Ctrl-C
TEST_F(CheckTest, PutsBackWhatItAlteredBeforeItStops) {
    setEnvironment("VYKEL_ZOO_FAULT", "interrupts");
    const ProgramResult run = check("--timeout 50" + library("zoo_plugin"));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("passed   number-kept"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("alias-kept"), std::string::npos) << run.output;
    EXPECT_EQ(textOf(stateFile), untouched);
}
#endif

TEST_F(CheckTest, IsDocumentedWithEveryRule) {
    std::istringstream rules(check("--list-rules").output);
    std::string table = "\n| rule | kept when |\n|---|---|\n";
    for (std::string id, title; std::getline(std::getline(rules, id, '\t') >> std::ws, title);)
        table += "| `" + id + "` | " + title.substr(0, title.find('\r')) + " |\n";
    EXPECT_NE(readFile(fs::path(VYKEL_DOCS) / "plugin-authors.md").find(table + '\n'), std::string::npos)
        << table;
}

TEST_F(CheckTest, EndsWithOneAndTwoWhenNothingCanBeChecked) {
    const std::pair<std::string, int> cases[] = {
        {quoted(folder / "missing"), 1},
        {quoted(folder), 1},
        {"/missing", 1},
        {"--rule library-loads --junit" + quoted(folder / "none" / "x") + library("zoo_plugin"), 1},
        {"", 2},
        {"--timeout nan" + quoted(stateFile), 2},
        {"--rule none" + quoted(stateFile), 2}};
    for (const auto& [arguments, exitCode] : cases)
        EXPECT_EQ(check(arguments).exitCode, exitCode) << arguments;
}

} // namespace
} // namespace vykeltest
