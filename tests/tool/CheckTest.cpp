#include "tool/Tool.h"
#include <sstream>

namespace vykeltest {
namespace {

class CheckTest : public ToolTest {
protected:
    CheckTest() {
        writeFile(state, untouched);
        if (const char* const windows = std::getenv("ProgramData")) // there a child sees no machine but this
            fs::create_directories(fs::path(windows) / "Morvance" / "VY-KEL");
    }

    static constexpr const char* untouched = "7\nPump\n";
    const std::string zoo = argument(builtLibrary("zoo_plugin"));
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
    {"no_library", "library-loads", "failed", "system error"},
    {"zoo_plugin_without_finalize", "entry-points", "failed", "not exported: vykel_finalizePlugin"},
    {"refuses_initialize", "initialises", "warning", "refused with -52003"},
    {"initializes_twice", "reload", "failed", "in round 2 refused with -52003"},
    {"makes_no_list", "new-list", "warning", "answered -52003"},
    {"null_list", "new-list", "failed", "stored no list"},
    {"one_list", "new-list", "failed", "the same list"},
    {"any_interface_version", "interface-version", "warning", "accepted with 0"},
    {"full_from_the_start", "empty-before-refresh", "warning", "has 2 devices"},
    {"stays_attached", "attach-detach", "failed", "refused it with -52005 in round 2"},
    {"crashes_attached", "attach-detach", "failed", "attach and detach, again"},
    {"crashes_unloading", "reload", "failed", "loading and unloading"},
    {"leaks_attachments", "attach-detach", "failed", "tokens attached and detached left"},
    {"crashes_refreshing", "refresh", "failed", " in: refresh"},
    {"hangs", "refresh", "failed", "no progress for 5000 ms in: refresh"},
    {"exits", "refresh", "failed", "exit code 0 in: refresh"},
    {"fails_refreshing", "refresh", "warning", "left the code -52003"},
    {"counts_down", "refresh", "failed", "getCount changed from 2 to 1"},
    {"slow_stale", "stale-cheap", "warning", "microseconds"},
    {"always_stale", "stale-settles", "warning", "three refreshes"},
    {"null_device", "devices", "failed", "getDevice(1) of 2 answered null"},
    {"refuses_device", "devices", "warning", "left the code -52003"},
    {"last_index", "index-beyond", "failed", "getDevice(4294967295) of 2 answered a device"},
    {"silent_index", "index-beyond", "failed", "null and left the code 0"},
    {"any_device_version", "minimum-version", "warning", "at least 3, was returned"},
    {"null_token", "token-present", "failed", "device 0 in format 2 is null"},
    {"token_by_call", "token-stable", "failed", "listed: first 'zoo "},
    {"token_by_refresh", "token-stable", "failed", "the tokens differ each time"},
    {"token_by_process", "token-stable", "failed", "is missing in the next"},
    {"one_object", "devices-stay", "failed", "became 'zoo 0/device 1'"},
    {"counts_lists", "devices-stay", "failed", "sort key 2"},
    {"latin_1_token", "texts-utf8", "failed", "getPersistentToken of device 0"},
    {"forgets_numbers", "number-kept", "failed", "set to '8', and in a new process it is '7'"},
    {"one_token", "tokens-differ", "warning", "0 and 1 both have the token 'zoo 0/device 0' in format 1"},
    {"refuses_numbers", "number-kept", "warning", "refused with -52003"},
    {"one_buffer", "texts-stay", "failed", "became 'zoo 0/device 1'"},
    {"crashes_numbering", "number-kept", "failed", "in: setNumber"},
    {"caches_aliases", "alias-kept", "failed", "read from another list it is"},
    {"cuts_aliases", "alias-kept", "failed", "read from the same device it is 'vyk'"},
    {"replaces_errors", "first-error-wins", "failed", "found the code -99 and left -52005"},
    {"clears_codes", "first-error-wins", "failed", "refresh found the code -99 and left 0"},
    {"keeps_warnings", "first-error-wins", "failed", "found the code 99 and left 99"},
    {"wears_out", "release-frees", "failed", "list 501: refresh left the code -52003"},
    {"leaks_lists", "release-frees", "failed", " KiB and 0 handles"},
#if !defined(_WIN32) // Wine does not count handles
    {"leaks_handles", "release-frees", "failed", " and 125 handles"},
#else
    {"ends_by_foreign_exception", "no-exception", "failed", "left refresh and ended the process"},
#endif
    {"one_thread", "threads", "failed", "on another thread"},
    {"fills_small_blocks", "status-guard", "failed", "getDevice changed the block"},
    {"throws_standard_type", "no-exception", "failed", "getVersion: zoo"},
    {"throws_own_type", "no-exception", "failed", "left refresh: of no standard type (seen in rule"},
};

class ZooTest : public CheckTest, public testing::WithParamInterface<Animal> {};

TEST_P(ZooTest, BreaksItsRuleAndNoOtherThatIsChecked) {
    const auto [fault, rule, result, observed] = GetParam();
    breakRule(fault);
    const std::string expected = result;
    const fs::path other = fault == std::string("no_library") ? state : builtLibrary(fault);
    const std::string options = std::string("--timeout ") + (fault == std::string("hangs") ? "5 " : "50 ") +
                                // Under Wine, where processes take long, only this rule and those it needs.
                                (isWindows ? "--rule " + std::string(rule) + " " : "");
    const Json report = runJson("check " + (fs::exists(other) ? argument(other) : zoo) + options,
                                expected == "failed"    ? 5
                                : expected == "warning" ? 4
                                                        : 0);
    EXPECT_EQ(report["result"], expected == "skipped" ? "passed" : expected);
    for (const Json& each : report["rules"])
        if (each["id"] != rule) {
            EXPECT_TRUE(each["result"] == "passed" || each["result"] == "skipped") << each;
        } else {
            EXPECT_EQ(each["result"], expected);
            expectPart(each["observed"], observed);
        }
    const bool lost = report.dump().find("'Pump', could not be put back") != std::string::npos;
    EXPECT_EQ(readText(state) == untouched, !lost);
}

INSTANTIATE_TEST_SUITE_P(All, ZooTest, testing::ValuesIn(animals),
                         [](const auto& animal) { return std::string(animal.param.fault); });

TEST_F(CheckTest, TheSimulatedPluginPassesAndIsLeftAsItWas) {
    const std::string devices =
        "token=a number=4 alias=\"Pump\"\ntoken=b version=2 alias=\"\" number=1\ntoken=c\n";
    setDevices("left", devices);
    expectPart(run("check --timeout 50 " + argument(machine.copyLibrary("simulated", "left"))),
               " passed, 0 failed, 0 with warnings, 0 skipped\n= 0");
    EXPECT_EQ(readFile(folder / "left.devices"), devices);
}

TEST_F(CheckTest, WarnsOfWhatItCouldNotTry) {
    machine.install("simulated", "other");
    setDevices("other", "token=x number=0\n");
    const std::string number = "number-kept --number-devices";
    const std::string none = "4294967295\nPump\n";
    const std::string free = isWindows ? "0\nPump\n" : "1\nPump\n"; // there a child sees no other plug-in
    const struct {
        std::string before, arguments, fault, result, observed, after;
    } cases[] = {{none, "number-kept", "", "warning", "'vykeldev check --number-devices' gives", none},
                 {none, number, "", "passed", "", free},
                 {none, number, "refuses_numbers", "warning", "refused with -52003", none},
                 {none, number, "forgets_numbers", "failed", "in a new process it is ''", none},
                 {"7\n", "alias-kept", "", "warning", "has an alias yet", "7\n"}};
    for (const auto& each : cases) {
        writeFile(state, each.before);
        breakRule("one_device," + each.fault);
        const Json report = Json::parse(
            runProgram("vykeldev", "check --json --timeout 50 " + zoo + "--rule " + each.arguments).output);
        EXPECT_EQ(report["rules"].back()["result"], each.result);
        expectPart(report["rules"].back()["observed"].dump(), each.observed);
        EXPECT_EQ(readText(state), each.after);
    }
}

TEST_F(CheckTest, LooksLessOftenInTime) {
    breakRule("slow_refresh");
    expectPart(run("check --budget 1 --rule threads " + zoo), "at once\n         looked less often");
    breakRule("refuses_initialize");
    expectPart(run("check " + zoo), "be made.\nskipped  24 rules             because 'initialises' did");
}

TEST_F(CheckTest, ReportsEverythingAlsoToABuildServer) {
    breakRule("latin_1_token,always_stale");
    const Json report =
        runJson("check --timeout 50 --read-only --junit " + argument(folder / "junit.xml") + zoo, 5);
    const std::size_t rules = report["rules"].size();
    EXPECT_EQ(report["result"], "failed");
    EXPECT_EQ(report["summary"],
              Json({{"passed", rules - 4}, {"failed", 1}, {"warning", 1}, {"skipped", 2}}));
    const std::string counts = "\" failures=\"1\" errors=\"0\" skipped=\"2\"";
    for (const std::string& part :
         {"tests=\"" + std::to_string(rules) + counts,
          std::string(
              "<failure message=\"getPersistentToken of device 0 is not valid UTF-8: '&lt;Ger\xEF\xBF\xBD"),
          std::string("<system-out>warning: the list is stale right after"),
          std::string("name=\"alias-kept\" time=\"0.000\"><skipped message=\"left out by --read-only\"/>")})
        expectPart(readFile(folder / "junit.xml"), part);
}

#if !defined(_WIN32) // where a plug-in cannot press its checker's Ctrl-C
TEST_F(CheckTest, PutsBackWhatItAlteredBeforeItStops) {
    breakRule("interrupts_check");
    const std::string text = run("check --timeout 50 " + zoo);
    expectPart(text, "passed   number-kept");
    EXPECT_EQ(text.find("alias-kept"), std::string::npos) << text;
    expectPart(text, "\n= 1");
    EXPECT_EQ(readText(state), untouched);
}
#endif

TEST_F(CheckTest, IsDocumentedWithEveryRule) {
    std::istringstream rules(run("check --list-rules"));
    std::string table = "\n| rule | kept when |\n|---|---|\n";
    for (std::string id, title; std::getline(std::getline(rules, id, '\t'), title);)
        table += "| `" + id + "` | " + title + " |\n";
    expectPart(readText(fs::path(VYKEL_DOCS) / "plugin-authors.md"), table + '\n');
}

TEST_F(CheckTest, EndsWithOneAndTwoWhenNothingCanBeChecked) {
    const std::string path = "\n  what to do: Give the path of the plug-in's DLL.\n= 1";
    const std::string usage = "\nRun with --help for more information.\n= 2";
    const std::pair<std::string, std::string> cases[] = {
        {argument(folder / "missing"), "cannot be checked: there is no such file" + path},
        {argument(folder), "cannot be checked: this is a folder" + path},
        {"/missing ", "cannot be checked: there is no such file" + path},
        {"--rule library-loads --junit " + argument(folder / "none" / "x") + zoo,
         "cannot be written\n  what to do: Give another file with --junit.\n= 1"},
        {"", "PLUGIN is required" + usage},
        {"--timeout nan " + zoo, "1 to 86400 seconds expected, not 'nan'" + usage},
        {"--rule none " + zoo, "there is no rule 'none'" + usage}};
    for (const auto& [arguments, error] : cases)
        expectPart(run("check " + arguments + "2>&1"), error);
}

} // namespace
} // namespace vykeltest
