#include "child/LineSplitter.h"
#include "tool/Tool.h"
#include <future>
#include <thread>

namespace vykeltest {
namespace {

/// What to run, and all that it writes or a part of it.
using Steps = std::initializer_list<std::pair<std::string, std::string>>;

class CommandsTest : public ToolTest {
protected:
    void follow(Steps steps) const {
        for (const auto& [arguments, text] : steps)
            expectPart("\n" + run(arguments + " 2>&1"), text);
    }

    const std::string gone = argument(folder / "gone");
};

TEST_F(CommandsTest, LeadFromTheFirstRegistrationToTheLast) {
    const std::string file = std::string("left") + pluginExtension;
    const std::string path = argument(machine.copyLibrary("simulated", "left"));
    const std::string devices = "token=a token2=z version=2 sortKey=5 alias=\"\xE9\x98\x80\"\n"
                                "token=\"b\\n\" number=9\ntoken=c version=3 alias=\"\"\n";
    const std::string none =
        "\nvykeldev: no plug-in is registered; 'vykeldev register NAME PATH' registers one\n= 3";
    setDevices("left", devices);
    machine.setPluginsKey(false);
    follow({{"plugins", none},
            {"register left " + path, "\nregistered left: " + file + "\n= 0"},
            {"register gone " + gone,
             "\nvykeldev: error: 'gone' is not registered: there is no such file\n"
             "  what to do: Give the path of the plug-in's DLL, or --force to register this one all the "
             "same.\n= 1"},
            {"register gone --force " + gone, "\nregistered gone: gone\n= 0"},
            {"plugins", "\nNAME  STATE                  PATH\ngone  there is no such file  gone\n"
                        "left  ok                     " +
                            file + "\n= 0"},
            {"list", "\nINDEX  NUMBER  ALIAS  VERSION  SORT KEY  TOKEN\n"
                     "    0  KEL1    \xE9\x98\x80           2         5  a\n"
                     "    1  KEL9    -            1         0  b\\x0A\n"
                     "    2  KEL0                 3         0  c\n= 0"},
            {"list --min-version 4", "\nvykeldev: no devices; 'vykeldev doctor' says why\n= 3"},
            {"list --min-version 4 -q", "\n= 3"},
            {"list --sort number", "TOKEN\n    2  KEL0                 3         0  c\n    0"},
            {"list --sort alias", "TOKEN\n    0"},
            {"list --sort token --format 2", "TOKEN\n    1"},
            {"list --number KEL9", "TOKEN\n    1  KEL9    -            1         0  b\\x0A\n= 0"},
            {"list --alias \"\" --token c", "TOKEN\n    2  KEL0"},
            {"list --alias \"\" --token a", "\nvykeldev: no device matches\n= 3"},
            {"list --number 9", "such as KEL3 expected, not '9'\nRun with"},
            {"lits", "\nThere is no command 'lits'; did you mean 'list'?\nRun with"},
            {"lost-and-found", "\nThere is no command 'lost-and-found'\nRun with"},
            {"-V", "\nvykeldev 1."},
            {"wait --count 4 --timeout 0.3", "\nvykeldev: time is over with 3 of 4 devices\n= 3"},
            {"unregister gone", "\nunregistered gone\n= 0"},
            {"unregister gone", "\nvykeldev: error: no plug-in is registered as 'gone'\n"
                                "  what to do: 'vykeldev plugins' shows the names.\n= 1"},
            {"register \"a\\b\" " + path, "1 to 255 characters and no backslash\n"
                                          "Run with --help for more information.\n= 2"},
            {"register " + std::string(256, 'n') + " " + path, "for more information.\n= 2"}});
    EXPECT_EQ(runJson("list --min-version 2 --format 2", 0),
              Json::parse(R"({"schemaVersion": 1, "tokenFormat": 2, "devices": [
  {"index": 0, "number": 1, "alias": "\u9600", "version": 2, "sortKey": 5, "token": "z"},
  {"index": 2, "number": 0, "alias": "", "version": 3, "sortKey": 0, "token": "c"}]})"));
    EXPECT_EQ(runJson("plugins", 0)["plugins"].at(0)["problem"], nullptr);
    EXPECT_EQ(runJson("doctor", 0)["findings"],
              Json::array()); // not even about the end of the registered text
    auto waiting = std::async(std::launch::async, [this] { return run("wait --count 4 --timeout 30"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    setDevices("left", devices + "token=d\n");
    EXPECT_EQ(waiting.get(), "4 devices\n= 0");
    follow({{"unregister left", "\nunregistered left\n= 0"}, {"plugins", none}});
}

TEST_F(CommandsTest, RefuseAFileThatIsNoPlugin) {
    writeFile(folder / "text", "no library");
    fs::copy(builtLibrary("zoo_plugin_without_finalize"), folder / "unfinished");
    for (const auto& [file, flaw] :
         {std::pair("text", "the file is not a Windows library"),
          std::pair("unfinished", "the library does not export vykel_finalizePlugin")}) {
        const std::string command = std::string("register ") + file + " " + argument(folder / file);
        follow({{command, isWindows ? std::string("' is not registered: ") + flaw + "\n" : "= 0"},
                {command + "--force", "= 0"},
                {"plugins", isWindows ? flaw : "= 0"}});
    }
}

TEST_F(CommandsTest, ExplainWhatTheLibraryRefuses) {
    const std::string list = "list --format 2 --library " + argument(builtLibrary("zoo_library"));
    for (const auto& [fault, text] :
         {std::pair("refuses_initialize", "initialising the library failed with -52003 (GeneralFault)"),
          std::pair("refuses_device", "getting device 1 failed with -52003 (GeneralFault)"),
          std::pair("null_token", "VERSION  SORT KEY  TOKEN\n"), std::pair("tells_its_end", "= 0")}) {
        breakRule(fault);
        follow({{list, text}});
    }
    EXPECT_EQ(readText(state), "1\n");
    machine.setConfigurationFolder(false);
    follow({{"list", "(ConfigurationFault)\n  meaning:    The folder of the lock files is missing"},
            {"list", "do: Run 'vykeldev setup' "}});
#if !defined(_WIN32)
    fs::create_directories(folder.parent_path().parent_path() / "registry.reg.new"); // in its way
    follow({{"register --force a b", "failed with system error 5\n  meaning:    Access is denied.\n"
                                     "  what to do: Run the tool as administrator.\n= 1"}});
#endif
}

TEST_F(CommandsTest, GiveDevicesNumbersAndAliases) {
    machine.install("simulated", "left");
    machine.install("simulated", "right");
    setDevices("left", "token=a number=2 alias=\"\"\ntoken=b number=0\n");
    setDevices("right", "token=c number=2\ntoken=d number=2\n");
    follow(
        {{"alias KEL2 x", "\nvykeldev: error: 3 devices have the number KEL2\n"},
         {"alias KEL2 \"Main valve\" --token a",
          "\nrenamed     KEL2    a  alias \"Main valve\", was \"\"\n= 0"},
         {"renumber KEL2 --dry-run", "\nkept        KEL2    a  alias \"Main valve\"\n"
                                     "renumbered  KEL1    c  was KEL2\nrenumbered  KEL3    d  was KEL2\n"
                                     "vykeldev: --dry-run: nothing was changed\n= 0"},
         {"renumber KEL2 --token c --json",
          "\n{\"schemaVersion\":1,\"event\":\"renumbered\",\"tokenFormat\":1,\"token\":\"a\",\"number\":1,\"alias\":\"Main valve\","
          "\"previousNumber\":2}\n{\"schemaVersion\":1,\"event\":\"kept\",\"tokenFormat\":1,\"token\":\"c\",\"number\":2,"},
         {"renumber KEL2", "\nkept        KEL2    c\n= 0"},
         {"alias KEL3 x", "\nvykeldev: error: the device 'd' takes no alias\n"},
         {"list", "KEL1    Main valve        1         0  a\n    1  KEL0"},
         {"alias KEL0 x --token a", "\nvykeldev: no device has the number KEL0 and this token\n= 3"},
         {"renumber KEL02", "a number such as KEL3 expected, not 'KEL02'\n"}});
    machine.install("zoo_plugin", "zoo");
    machine.install("zoo_plugin", "zoo2");
    follow({{"renumber KEL7", "\nvykeldev: error: several devices have the token 'zoo 0/device 0'\n"},
            {"unregister left", "= 0"},
            {"unregister right", "= 0"},
            {"unregister zoo2", "= 0"}});
    breakRule("cuts_aliases");
    follow({{"alias KEL7 Valve", "\nvykeldev: error: giving 'zoo 0/device 0' an alias had no effect\n"}});
    if (!isWindows)
        setEnvironment("WINHOST_FAULT", "LockFileEx:3:fail"); // the first two are the refresh's
    follow({{"renumber KEL7", isWindows ? "= 0" : "\nvykeldev: error: locking '"}});
    setEnvironment("WINHOST_FAULT", "LockFileEx:1000:fail"); // that is none
}

TEST_F(CommandsTest, LetNoControlCharacterThrough) {
    const std::string text = "a\x1B[1m\x7F\xC2\x9B\xE2\x80\xAE\xE2\x81\xA9";
    writeFile(configuration / "vykel.ini", "[Aliases]\n" + text + " = KEL7\n" + text + "\n");
    const std::string zoo = argument(machine.install("zoo_plugin", "b"));
    std::vector<std::string> commands = {"list " + argument(text), "unregister " + argument(text),
                                         "list --library " + argument(text), "check --json " + zoo,
                                         "check --rule refresh " + zoo};
    for (const char* const command : {"list", "list --json", "aliases", "aliases --json", "doctor",
                                      "doctor --json", "wait --count 9 --timeout 1"})
        commands.emplace_back(command);
    for (const char* const watch : {"watch", "watch --json"})
        if (!isWindows) // where a test cannot end it
            commands.push_back(std::string(watch) + " 2>&1 & sleep 1; kill $!; wait");
    for (const char* const fault : {"throws_controls", "controls_token"}) {
        breakRule(fault);
        follow({{"list", "\\x1B[31m\\x07\\x0A\\x7F\\x9B2J\\u202E\\u2066"}});
        for (const std::string& command : commands) {
            const std::string output = run(command + " 2>&1");
            for (const char* const control : {"\x1B", "\a", "\x7F", "\xC2\x9B", "\xE2\x80\xAE", "\xE2\x81"})
                EXPECT_EQ(output.find(control), std::string::npos) << command << '\n' << output;
        }
    }
}

#if !defined(_WIN32) // where a test can neither press Ctrl-C nor kill, and no disk is full when it is told so
TEST_F(CommandsTest, CompleteTheirOwnNamesAndOptions) {
    writeFile(folder / "ask", R"sh(source /dev/stdin
        for line in 'unr' '--library x l' 'list --min' 'doctor --list-f' 'completion p' 'setup --qu'; do
            COMP_WORDS=(vykeldev $line) COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _vykeldev; echo ${COMPREPLY[@]}
        done)sh");
    EXPECT_EQ(run("completion bash | bash " + argument(folder / "ask")),
              "unregister\nlist\n--min-version\n\npowershell\n--quiet\n= 0");
    expectPart(run("completion powershell"), "        'plugins' = '--help', '-h', '--json', ");
}

TEST_F(CommandsTest, WatchTellsEachChangeAndEachTroubleOnce) {
    machine.install("simulated", "a");
    machine.install("zoo_plugin", "b");
    writeFile(state, "7\nPump\n");
    setDevices("a", "token=a token2=A number=4 alias=A\ntoken=b number=5\n");
    setDevices("2", "token=a number=6 alias=\"\"\n");
    setDevices("3", "token=a number=6\n");
    setDevices("4", "token=a number=33\n");
    follow({{"list >/dev/full", "= 1"},
            {"watch --interval 0.05 >/dev/full", "= 1"},
            {"watch --json --format 2 | head -1", R"("tokenFormat":2,"token":"A","number":4,)"}});
    const std::string script = R"sh(
        lines() { for i in $(seq 200); do [ "$(wc -l <out)" -ge $1 ] || sleep 0.05; done 2>&-; }
        ini=Morvance/VY-KEL/vykel.ini
        spoil() { printf '[General]\nMajorVersion=15\nMinorVersion=0\n[Alias0]\nAlias=x\n' >$ini; }
        lines 4; mv 2.devices a.devices
        lines 7; spoil; mv 3.devices a.devices
        lines 9; sleep 0.3; rm $ini
        sleep 1; spoil; mv 4.devices a.devices
        lines 11; kill -INT $watch; wait $watch; code=$?
        sed 's/ failed.*;/ failed;/' out; exit $code)sh";
    fs::current_path(folder);
    EXPECT_EQ(run("watch --interval 0.05 >out 2>&1 & watch=$!;" + script), R"(added       KEL4    a  alias "A"
added       KEL5    b
added       KEL7    zoo 0/device 0  alias "Pump"
added       -       zoo 0/device 1
removed     KEL5    b
renumbered  KEL6    a  was KEL4
renamed     KEL6    a  alias "", was "A"
renamed     KEL6    a  alias -, was ""
vykeldev: refreshing the devices failed; watching on
renumbered  KEL33   a  was KEL6
vykeldev: refreshing the devices failed; watching on
= 0)");
}

/// The process whose number is in the file ended, though nobody may have asked how.
bool isGone(const fs::path& state) {
    const std::string file = "/proc/" + std::to_string(std::stoi(readFile(state))) + "/cmdline";
    for (int i = 0; i < 200 && !readFile(file).empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return readFile(file).empty();
}

TEST_F(CommandsTest, LeaveNoProcessThatAPluginStarted) {
    machine.install("zoo_plugin", "b");
    breakRule("starts_process");
    run("doctor --timeout 20");
    EXPECT_TRUE(isGone(state));
    fs::remove(state);
    breakRule("tells_its_process,hangs");
    run("doctor >/dev/null & until [ -s " + argument(state) + "]; do sleep 0.05; done; kill -KILL $!; wait");
    EXPECT_TRUE(isGone(state));
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
