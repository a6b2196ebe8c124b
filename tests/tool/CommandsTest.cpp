#include "child/LineSplitter.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include <future>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vykeltest {
namespace {

using Json = nlohmann::json;

class CommandsTest : public testing::Test {
protected:
    CommandsTest() {
        setEnvironment("VYKEL_ZOO_STATE", state.string());
        setEnvironment("VYKEL_ZOO_FAULT", "");
    }

    /// All that the tool writes, without the machine's folder in it, and "= " with its exit code.
    std::string run(const std::string& arguments) const {
        const ProgramResult result = runProgram("vykeldev", arguments + " 2>&1");
        std::string text = result.output + "= " + std::to_string(result.exitCode);
        for (const std::string& noise : {std::string("\r"), (machine.folder() / "").string()})
            for (std::size_t at = text.find(noise); at != std::string::npos; at = text.find(noise))
                text.erase(at, noise.size());
        return text;
    }

    struct Step {
        std::string arguments;
        std::string text; ///< All that it writes, or a part of it.
    };
    void follow(std::initializer_list<Step> steps) const {
        for (const Step& step : steps) {
            const std::string text = run(step.arguments);
            EXPECT_NE(text.find(step.text), std::string::npos) << step.arguments << ":\n" << text;
        }
    }

    /// Gives the plug-in `name` these devices, in one step.
    void see(const std::string& name, const std::string& devices) const {
        writeFile(machine.folder() / "next", devices);
        fs::rename(machine.folder() / "next", machine.folder() / (name + ".devices"));
    }

    Machine machine;
    const fs::path state = machine.folder() / "state";
    const std::string gone = '"' + (machine.folder() / "gone").string() + '"';
};

TEST_F(CommandsTest, LeadFromTheFirstRegistrationToTheLast) {
    const std::string file = std::string("left") + pluginExtension;
    const std::string path = '"' + machine.copyLibrary("simulated", "left").string() + "\" ";
    const std::string devices = "token=a token2=A version=2 sortKey=5 alias=\"\xE9\x98\x80\"\n"
                                "token=\"b\\n\" number=9\ntoken=c version=3 alias=\"\"\n";
    const std::string none =
        "vykeldev: no plug-in is registered; 'vykeldev register NAME PATH' registers one\n= 3";
    see("left", devices);
    machine.setPluginsKey(false);
    follow({{"plugins", none},
            {"register left " + path, "registered left: " + file + "\n= 0"},
            {"register gone " + gone,
             "vykeldev: error: 'gone' is not registered: there is no such file\n"
             "  what to do: Give the path of the plug-in's DLL, or --force to register it before it is "
             "there.\n= 1"},
            {"register gone --force " + gone, "registered gone: gone\n= 0"},
            {"plugins", "NAME  STATE                  PATH\ngone  there is no such file  gone\n"
                        "left  ok                     " +
                            file + "\n= 0"},
            {"list", "INDEX  NUMBER  ALIAS  VERSION  SORT KEY  TOKEN\n"
                     "    0  KEL1    \xE9\x98\x80           2         5  a\n"
                     "    1  KEL9    -            1         0  b\\x0A\n"
                     "    2  KEL0                 3         0  c\n= 0"},
            {"list --min-version 4",
             "vykeldev: no devices; 'vykeldev plugins' shows which plug-ins are registered\n= 3"},
            {"wait --count 4 --timeout 0.3", "vykeldev: time is over with 3 of 4 devices\n= 3"},
            {"unregister gone", "unregistered gone\n= 0"},
            {"unregister gone", "vykeldev: error: no plug-in is registered as 'gone'\n"
                                "  what to do: 'vykeldev plugins' shows the names.\n= 1"},
            {"register \"a\\b\" " + path, "1 to 255 characters and no backslash\n"
                                          "Run with --help for more information.\n= 2"},
            {"register " + std::string(256, 'n') + " " + path, "for more information.\n= 2"}});
    EXPECT_EQ(Json::parse(runProgram("vykeldev", "list --json --min-version 2 --format 2").output),
              Json::parse(R"({"schemaVersion": 1, "tokenFormat": 2, "devices": [
  {"index": 0, "number": 1, "alias": "\u9600", "version": 2, "sortKey": 5, "token": "A"},
  {"index": 2, "number": 0, "alias": "", "version": 3, "sortKey": 0, "token": "c"}]})"));
    const Json plugins = Json::parse(runProgram("vykeldev", "plugins --json").output)["plugins"];
    EXPECT_EQ(plugins.at(0)["problem"], nullptr);
    const Json report = Json::parse(runProgram("vykeldev", "doctor --json").output);
    EXPECT_EQ(report["findings"], Json::array()); // not even about the end of the registered text
    auto waiting = std::async(std::launch::async, [this] { return run("wait --count 4 --timeout 30"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    see("left", devices + "token=d\n");
    EXPECT_EQ(waiting.get(), "4 devices\n= 0");
    follow({{"unregister left", "unregistered left\n= 0"}, {"plugins", none}});
}

TEST_F(CommandsTest, ExplainWhatTheLibraryRefuses) {
    const std::string library = "--library \"" + machine.copyLibrary("zoo_plugin", "zoo").string() + "\" ";
    const struct {
        const char* fault;
        const char* text;
    } cases[] = {{"refuses", "initialising the library failed with -52003 (GeneralFault)"},
                 {"refuses-device", "getting device 1 failed with -52003 (GeneralFault)"},
                 {"null-token", "VERSION  SORT KEY  TOKEN\n"}};
    for (const auto& each : cases) {
        setEnvironment("VYKEL_ZOO_FAULT", each.fault);
        follow({{library + "list --format 2", each.text}});
    }
    setEnvironment("VYKEL_ZOO_FAULT", "tells-its-end");
    run(library + "list");
    EXPECT_EQ(readFile(state).substr(0, 1), "1");
    machine.setConfigurationFolder(false);
    follow({{"list", "(ConfigurationFault)"},
            {"list", "\n  meaning:    A lock file"},
            {"list", "do: Make the "}});
#if !defined(_WIN32)
    fs::create_directories(machine.folder().parent_path().parent_path() / "registry.reg.new"); // in its way
    follow({{"register --force a b", "failed with system error 5\n  meaning:    Access is denied.\n"
                                     "  what to do: Run the tool as administrator.\n= 1"}});
#endif
}

#if !defined(_WIN32) // where a test can neither press Ctrl-C nor kill, and no disk is full when it is told so
TEST_F(CommandsTest, WatchTellsEachChangeAndEachTroubleOnce) {
    machine.install("simulated", "a");
    machine.install("zoo_plugin", "b");
    writeFile(state, "7\nPump\n");
    see("a", "token=a number=4 alias=A\ntoken=b number=5\n");
    see("2", "token=a number=6 alias=\"\"\n");
    see("3", "token=a number=6\n");
    see("4", "token=a number=33\n");
    EXPECT_EQ(run("list >/dev/full"), "= 1");
    EXPECT_EQ(run("watch --interval 0.05 >/dev/full"), "= 1");
    const std::string script = R"sh(
        lines() { for i in $(seq 200); do [ "$(wc -l <out)" -ge $1 ] || sleep 0.05; done 2>&-; }
        ini=Morvance/VY-KEL/vykel.ini
        spoil() { printf '[General]\nMajorVersion=15\nMinorVersion=0\n[Alias0]\nAlias=x\n' >$ini; }
        lines 4; mv 2.devices a.devices
        lines 7; spoil; mv 3.devices a.devices
        lines 8; sleep 0.3; rm $ini
        lines 9; spoil; mv 4.devices a.devices
        lines 10; kill -INT $watch; wait $watch; code=$?
        sed 's/ failed.*;/ failed;/' out; exit $code)sh";
    fs::current_path(machine.folder());
    const std::string text = run("watch --interval 0.05 >out 2>&1 & watch=$!;" + script);
    EXPECT_EQ(text, R"(added       KEL4    a  alias "A"
added       KEL5    b
added       KEL7    zoo/device 0  alias "Pump"
added       -       zoo/device 1
removed     KEL5    b
renumbered  KEL6    a  was KEL4
renamed     KEL6    a  alias "", was "A"
vykeldev: refreshing the devices failed; watching on
renamed     KEL6    a  alias -, was ""
vykeldev: refreshing the devices failed; watching on
= 0)");
}

/// The process ended, though nobody may have asked how.
bool isGone(const std::string& process) {
    for (int i = 0; i < 200 && !readFile("/proc/" + process + "/cmdline").empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return readFile("/proc/" + process + "/cmdline").empty();
}

TEST_F(CommandsTest, LeaveNoProcessThatAPluginStarted) {
    machine.install("zoo_plugin", "b");
    setEnvironment("VYKEL_ZOO_FAULT", "starts-process");
    run("doctor --timeout 20");
    EXPECT_TRUE(isGone(readFile(state)));
    fs::remove(state);
    setEnvironment("VYKEL_ZOO_FAULT", "hangs-by-name");
    run("doctor >/dev/null & until [ -s '" + state.string() +
        "' ]; do sleep 0.05; done; kill -KILL $!; wait");
    EXPECT_TRUE(isGone(readFile(state)));
}
#endif

TEST(LineSplitter, KeepsTheLastLineAndBoundsALongOne) {
    std::vector<std::size_t> sizes;
    vykeldev::LineSplitter lines([&](const std::string& line) { sizes.push_back(line.size()); });
    const std::string flood(vykeldev::LineSplitter::maxLineBytes + 9, 'x');
    lines.add((flood + "\r\n\nend").c_str(), flood.size() + 6);
    lines.end();
    EXPECT_EQ(sizes, (std::vector<std::size_t>{flood.size() - 9, 0, 3}));
}

} // namespace
} // namespace vykeltest
