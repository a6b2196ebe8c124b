#include "support/Machine.h"
#include "support/TestFiles.h"
#include <algorithm>
#include <gtest/gtest.h>

namespace vykeltest {
namespace {

struct SetupTest : testing::Test {
    SetupTest() { forget(); }

    /// Makes the machine a new one.
    void forget() {
        fs::remove_all(upper);
        machine.setPluginsKey(false);
    }

    /// The exit code of the tool, what it writes, and "+" when the folder above is there then.
    std::string run(const std::string& arguments) const {
        const ProgramResult ran = runProgram("vykeldev", arguments + " 2>&1");
        std::string text = std::to_string(ran.exitCode) + ' ' + ran.output + (fs::exists(upper) ? "+" : "");
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }

    Machine machine;
    const fs::path upper = machine.configurationFolder().parent_path();
    const std::string key = ": registry key HKEY_LOCAL_MACHINE\\SOFTWARE\\Morvance\\VY-KEL\\Plugins\n";
    const std::string folder = ": folder " + machine.folderName() + "\\Morvance\\VY-KEL\n";
    const std::string complete = "0 present" + key + "present" + folder;
    const std::string nothing = "5 missing" + key + "missing" + folder;
};

TEST_F(SetupTest, MakesWhatIsMissing) {
    const std::string path = '"' + machine.copyLibrary("simulated", "p").string() + '"';
    EXPECT_EQ(run("setup --check"), nothing);
    EXPECT_EQ(run("register p gone").back(), '\n'); // it made nothing
    EXPECT_EQ(run("setup"), "0 made" + key + "made" + folder + '+');
    EXPECT_EQ(run("setup"), complete + '+');
    EXPECT_EQ(run("setup --reset-rights"), complete + "rights set" + folder + '+');
    EXPECT_EQ(run("list").substr(0, 1), "3");
    fs::remove_all(machine.configurationFolder());
    EXPECT_EQ(run("setup --check"), "5 present" + key + "missing" + folder + '+');
    EXPECT_EQ(run("register p " + path).find("0 made" + folder + "registered p: "), 0u);
#if defined(_WIN32)
    DWORD sizes[2] = {}; // Wine keeps of the rights only that they are fewer than those of the folder above
    GetFileSecurityW(machine.configurationFolder().c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &sizes[0]);
    GetFileSecurityW(upper.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &sizes[1]);
    EXPECT_LT(sizes[0], sizes[1]);
#endif
    forget();
    writeFile(upper, "");
    EXPECT_NE(run("setup").find("Morvance' is a file\n"), std::string::npos);
}

#if !defined(_WIN32)
TEST_F(SetupTest, LeavesNothingHalfMade) {
    setEnvironment("WINHOST_FAULT", "RegCreateKeyExW:1:onward");
    EXPECT_NE(run("setup").find("\n  what to do: Run the tool as administrator.\n"), std::string::npos);
    for (int nth = 1; nth < 50; ++nth, forget()) {
        setEnvironment("WINHOST_FAULT", "Any:" + std::to_string(nth) + ":fail");
        const bool failed = run("setup")[0] != '0';
        setEnvironment("WINHOST_FAULT", "Any:1000:fail"); // that is none
        const std::string left = run("setup --check");
        EXPECT_TRUE(left == complete + '+' || (failed && left == nothing)) << nth << ": " << left;
    }
}
#endif

} // namespace
} // namespace vykeltest
