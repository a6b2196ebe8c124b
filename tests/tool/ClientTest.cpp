#include "pellumkelddk/user/FileLock.h"
#include "tool/Tool.h"
#include "vyfile/internal/FileLockImpl.h"
#include <chrono>
#include <thread>

namespace vykeltest {
namespace {

class ClientTest : public ToolTest {
protected:
    ClientTest() { machine.install("zoo_plugin", "zoo"); }

    /// Whatever a plug-in does, the command ends soon, and what --json prints is JSON.
    static void expect(const std::string& command, int exitCode, const std::string& part) {
        const auto begin = std::chrono::steady_clock::now();
        const ProgramResult result = runProgram("vykeldev", command);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(40));
        EXPECT_EQ(result.exitCode, exitCode) << command;
        EXPECT_TRUE(command.find("--json") == std::string::npos || Json::accept(result.output)) << command;
        expectPart(result.output, part);
    }

    const fs::path lockFile = configuration / "DeviceList.lck";
};

TEST_F(ClientTest, NamesWhatAPluginDoesToIt) {
    const struct {
        const char* fault;
        const char* command;
        int exitCode;
        const char* part; ///< of what the command prints
    } cases[] = {{"crashes_refreshing", "list --json", 1, " while refreshing the devices"},
                 {"exits", "list --json", 1, "the client process ended with exit code 0 while refreshing"},
                 {"exits", "wait 2>&1", 1, "  what to do: Run 'vykeldev doctor': it names the plug-in."},
                 {"exits", "watch --json", 1, "{\"schemaVersion\":1,\"error\":{\"code\":null,"},
                 {"crashes_releasing", "list --json", 1, " while unloading the plug-ins"},
                 {"crashes_releasing", "list --json", 1, "\"token\": \"zoo 0/device 0\""},
                 {"hangs", "list --json --timeout 1", 1, "time is over: a plug-in is at work (refreshing"},
                 {"hangs", "wait --timeout 0.1 2>&1", 3, "0 of 1 devices; a plug-in is at work"},
                 {"floods", "list --json --timeout 1", 1, "time is over: a plug-in is at work"},
                 {"prints", "list --json", 0, "\"token\": \"zoo 0/device 0\""},
                 {"prints", "list 2>&1", 0, "no number, though the refresh gave one: [1] zoo 0/device 1"},
                 {"prints", "wait --count 2 --timeout 0", 0, "2 devices"}};
    for (const auto& each : cases) {
        breakRule(each.fault);
        expect(each.command, each.exitCode, each.part);
    }
}

TEST_F(ClientTest, ShowsTheDevicesOfARefreshThatFails) {
    fs::create_directory(lockFile);
    expect("list --json", 4, "\"code\": -50209,");
    expect("list --json", 4, "DeviceList.lck: a folder has its name\"");
    expect("list 2>&1", 4, "    1  -       -            2         0  zoo 0/device 1");
    expect("wait --count 2 2>&1", 4, "vykeldev: warning: refreshing the devices failed with -50209");
    expect("wait --count 3 2>&1", 1, "vykeldev: error: refreshing the devices failed with -50209");
}

TEST_F(ClientTest, NamesTheOneCause) {
    writeFile(state, "7\n\n");
    writeFile(configuration / "vykel.ini", "[Aliases]\nx = KEL7\n");
    fs::create_directory(configuration / "vykel.TMP");
    expect("list 2>&1", 4, "  what to do: Remove that folder.");
    writeFile(configuration / "vykel.ini", "[General]\nMajorVersion=15\nMinorVersion=0\n[Alias0]\nAlias=x\n");
    expect("list 2>&1", 4, "vykel.ini:4: ");
    machine.setConfigurationFolder(false);
    expect("list -v 2>&1", 4, "  raised at:  includes/pellumkelddk/user/FileLock.cpp:");
    machine.setFolderName(machine.folderName() + "\\missing");
    expect("list 2>&1", 1, isWindows ? "data: File not found" : "data: The system cannot find");
    machine.setPluginsKey(false);
    expect("list 2>&1", 1, "  meaning:    The registry key of the plug-ins is missing");
}

TEST_F(ClientTest, SaysWhichLockItWaitsFor) {
    const vykel::FileStream stream = vykel::openLockFile(lockFile.string().c_str());
    vyfile::FileLockImpl(stream.get()).lock(); // until the stream ends
    expect("list --json --timeout 1", 1, "DeviceList.lck' is locked, by");
    expect("list -v --timeout 4 2>&1", 1, "vykeldev: waiting: '");
    expect("wait --timeout 0.1 2>&1", 3, "DeviceList.lck' is locked, by");
}

#if !defined(_WIN32) // where a test can neither press Ctrl-C nor make a plug-in start a process
TEST_F(ClientTest, LeavesNoProcess) {
    breakRule("starts_process,hangs");
    const std::string interrupt =
        "& until [ -s " + argument(state) + "]; do sleep 0.05; done; kill -INT $!; wait $!";
    for (const std::string& command :
         {std::string("list --timeout 1"), "list " + interrupt, "wait " + interrupt}) {
        fs::remove(state);
        EXPECT_EQ(runProgram("vykeldev", command).exitCode, 1) << command;
        const std::string process = "/proc/" + std::to_string(std::stoi(readFile(state))) + "/cmdline";
        for (int i = 0; i < 200 && !readFile(process).empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(readFile(process), "") << command;
    }
}
#endif

} // namespace
} // namespace vykeltest
