#include "pellumkelddk/user/FileLock.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vyfile/internal/FileLockImpl.h"
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

namespace vykeltest {
namespace {

using Json = nlohmann::json;

const bool isWindows = std::string(pluginExtension) == ".dll";

#if defined(VYKEL_SANITIZED)
constexpr const char* crashed = "plugin-exited"; // the sanitizer ends a process that crashes
#else
constexpr const char* crashed = "plugin-crashed";
#endif

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

class DoctorTest : public testing::Test {
protected:
    Machine machine;
    int exitCode = -1;
    Json report;

    void diagnose(const std::string& options = "") {
        const ProgramResult result = runProgram("vykeldev", "doctor --json " + options);
        exitCode = result.exitCode;
        report = Json::parse(result.output);
    }

    /// A plug-in that lists the devices of these lines.
    void installSimulated(const std::string& name, const std::string& devices) {
        machine.install("simulated", name);
        writeFile(machine.folder() / (name + ".devices"), devices);
    }

    /// Registers a file of these bytes.
    void installBytes(const std::string& name, const std::string& bytes) {
        const fs::path path = machine.folder() / (name + pluginExtension);
        writeFile(path, bytes);
        machine.registerPlugin(name, path);
    }

    /// The findings about a subject, or about all: "identifier", with ":line" where there is one.
    std::string findings(const std::string& subject = "") const {
        std::string text;
        for (const Json& finding : report["findings"]) {
            if (subject.empty() || finding["subject"] == subject)
                text += (text.empty() ? "" : " ") + finding["id"].get<std::string>() +
                        (finding["line"].is_null() ? "" : ":" + finding["line"].dump());
        }
        return text;
    }

    std::string outcome(std::size_t index) const {
        const Json& plugin = report["plugins"].at(index);
        const Json& step = plugin["failedStep"];
        return plugin["outcome"].get<std::string>() +
               (step.is_null() ? "" : " at " + step.get<std::string>());
    }
};

TEST_F(DoctorTest, IsContentWithAHealthyMachine) {
    installSimulated("left", "token=a number=0\ntoken=b number=1\n");
    installSimulated("right", "token=c number=2\n");
    diagnose();
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(findings(), "");
    EXPECT_EQ(report["state"], "healthy");
    EXPECT_EQ(report["counts"], Json({{"registered", 2}, {"loaded", 2}, {"refused", 0}, {"failed", 0}}));
    EXPECT_EQ(report["plugins"][0]["deviceNumbers"], Json({0, 1}));
    const std::string text = runProgram("vykeldev", "doctor").output;
    EXPECT_NE(text.find("healthy"), std::string::npos) << text;
}

TEST_F(DoctorTest, AccountsForEveryFileThatDoesNotLoad) {
    const std::string library = readFile(programFolder() / (std::string("simulated") + pluginExtension));
    std::string otherMachine = library;
    otherMachine[isWindows ? library.find(std::string("PE\0\0", 4)) + 4 : 18] = 3;
    const auto importing = [&](const char* name) {
        return isWindows ? replaced(library, "msvcrt.dll", name)
                         : replaced(library, "libwinhost.so", "libwinhosx.so");
    };
    if (isWindows) {
        writeFile(machine.folder() / "helper.dll", importing("msvcrx.dll"));
        writeFile(machine.folder() / "itself.dll", importing("itself.dll"));
        setEnvironment("PATH", machine.folder().string());
    }
    const DWORD text = REG_SZ;
    machine.registerPlugin("a", nullptr, nullptr, 0);
    machine.registerPlugin("b", &text, "\0", 2);
    machine.registerPlugin("c", machine.folder());
    machine.registerPlugin("d", machine.folder() / "nothing");
    installBytes("e", "no library");
    installBytes("f", library.substr(0, 200));
    installBytes("g", otherMachine);
    installBytes("h", importing("msvcrx.dll"));
    machine.install("zoo_plugin_without_finalize", "i");
    installSimulated("j", "token=a number=0\n");
    installBytes("k", importing("helper.dll"));
    installBytes("l", importing("itself.dll"));
    diagnose();
    // The host's doctor leaves a library's headers to the loader.
    const struct {
        const char* outcome;
        const char* finding;
        const char* detail = ""; ///< part of it
        bool fromHeaders = false;
    } expected[] = {{"failed at registry value", "value-missing"},
                    {"failed at path", "path-empty"},
                    {"failed at path", "path-empty"},
                    {"failed at file", "file-missing"},
                    {"failed at file", "file-not-a-library", "not a Windows library", true},
                    {"failed at file", "file-not-a-library", "cut off", true},
                    {"failed at architecture", "architecture-wrong", "not for x64", true},
                    {"failed at dependency", "dependency-missing", "not found: msvcrx.dll (", true},
                    {"failed at entry point", "entry-point-missing",
                     isWindows ? "missing: vykel_finalizePlugin" : "code -52005"},
                    {"loaded", ""},
                    {"failed at dependency", "dependency-missing",
                     "not found: msvcrx.dll (imported by helper.dll)", true},
                    {"failed at load", "load-refused"}};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const bool refused = expected[i].fromHeaders && !isWindows;
        EXPECT_EQ(outcome(i), refused ? "failed at load" : expected[i].outcome) << i;
        EXPECT_EQ(findings(std::string(1, static_cast<char>('a' + i))),
                  refused ? "load-refused" : expected[i].finding);
        const std::string detail = report["plugins"][i]["detail"];
        EXPECT_NE(detail.find(refused ? "code -52005" : expected[i].detail), std::string::npos) << detail;
    }
    EXPECT_EQ(exitCode, 5);
    EXPECT_EQ(report["counts"], Json({{"registered", std::size(expected)},
                                      {"loaded", 1},
                                      {"refused", 0},
                                      {"failed", std::size(expected) - 1}}));
    const Json& missingFile = report["plugins"][3];
    EXPECT_EQ(missingFile["system"]["code"], ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(missingFile["error"]["document"]["vydynlib_debug"]["path"], missingFile["path"]);
}

TEST_F(DoctorTest, NamesWhatAPluginDoesAndGoesOn) {
    const struct {
        const char* fault;
        const char* outcome;
        const char* finding;
        int exitCode;
    } cases[] = {{"refuses", "refused at initialise", "plugin-refused", 4},
                 {"no-list", "refused at list", "plugin-refused", 4},
                 {"null-list", "failed at list", "list-missing", 5},
                 {"throws-own-type", "failed at refresh", "plugin-threw", 5},
                 {"fails", "failed at refresh", "refresh-failed", 5},
                 {"refuses-device", "failed at refresh", "device-refused", 5},
                 {"exits", "failed at refresh", "plugin-exited", 5},
                 {"hangs", "failed at refresh", "plugin-hung", 5},
                 {"floods", "failed at refresh", "plugin-hung", 5},
                 {"fails-and-crashes", "failed at unload", crashed, 5},
                 {"crashes", "failed at refresh", crashed, 5}};
    installSimulated("a", "token=a number=0\n");
    machine.install("zoo_plugin", "b");
    installSimulated("c", "token=c number=1\n");
    for (const auto& each : cases) {
        SCOPED_TRACE(each.fault);
        setEnvironment("VYKEL_ZOO_FAULT", each.fault);
        diagnose(each.finding == std::string("plugin-hung") ? "--timeout 3" : "--timeout 50");
        EXPECT_EQ(exitCode, each.exitCode);
        EXPECT_EQ(outcome(0) + ", " + outcome(1) + ", " + outcome(2),
                  std::string("loaded, ") + each.outcome + ", loaded");
        EXPECT_EQ(findings(), each.finding);
    }
}

TEST_F(DoctorTest, ChecksRegistrationsAndNumbers) {
    diagnose();
    EXPECT_EQ(findings(), "plugins-none");
    machine.setPluginsKey(false);
    diagnose();
    EXPECT_EQ(findings(), "plugins-key-missing");
    EXPECT_EQ(exitCode, 5);
    const fs::path path = machine.install("simulated", "a");
    writeFile(machine.folder() / "a.devices", "token=a number=3\ntoken=b\n");
    const WideString text = path.string<WCHAR>();
    const DWORD types[] = {REG_EXPAND_SZ, REG_SZ};
    machine.registerPlugin("b", &types[0], text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    // Behind the unterminated text must stand no 0: the system would store it, too.
    machine.registerPlugin("c", &types[1], (text + WCHAR{'x'}).c_str(), text.size() * sizeof(WCHAR));
    machine.registerPlugin("d", "relative" + path.filename().string());
    machine.registerPlugin("e", path.parent_path() / std::string(40000, 'x'));
    machine.registerPlugin("f", fs::path('"' + path.string() + '"'));
    diagnose();
    EXPECT_EQ(findings("a"), "number-missing");
    EXPECT_EQ(findings("b"), "value-type path-duplicate number-missing");
    EXPECT_EQ(findings("c"), "value-unterminated path-duplicate number-missing");
    EXPECT_EQ(findings("d"), "path-relative file-missing");
    EXPECT_EQ(findings("e"), "file-missing"); // whatever cannot even be handed to a child
    EXPECT_EQ(findings("f"), "file-missing"); // not also "path-relative"
    EXPECT_EQ(findings("number 3"), "number-duplicate");
}

TEST_F(DoctorTest, ChecksFolderAndLocks) {
    installSimulated("a", "token=a number=0\n");
    {
        const std::string path = (machine.configurationFolder() / "vykel.lck").string();
        const vykel::FileStream stream = vykel::openLockFile(path.c_str());
        vyfile::FileLockImpl lock(stream.get());
        lock.lock();
        diagnose();
        EXPECT_EQ(findings(), "lock-held");
        EXPECT_EQ(report["legacyFile"]["state"], "not read");
        EXPECT_EQ(runProgram("vykeldev", "aliases").exitCode, 1); // and does not wait for good
        EXPECT_EQ(exitCode, 4);
        EXPECT_EQ(report["locks"][0]["state"], "free");
        EXPECT_GE(report["locks"][1]["secondsWaited"], 1.9);
    }
    fs::remove(machine.configurationFolder() / "DeviceList.lck");
    fs::create_directory(machine.configurationFolder() / "DeviceList.lck");
    diagnose();
    EXPECT_EQ(findings(), "lock-unusable");
    machine.setConfigurationFolder(false);
    diagnose();
    EXPECT_EQ(findings(), "folder-missing");
    EXPECT_EQ(exitCode, 5);
}

TEST_F(DoctorTest, ChecksTheLegacyFile) {
    const std::string tokens = "[General]\nMajorVersion=15\nMinorVersion=0\n";
    const struct {
        std::string text;
        const char* findings;
    } cases[] = {
        {"[Aliases]\n; a comment\n\nLab = KEL0\n", ""},
        {std::string("\xFF\xFE[\0A\0", 6), "legacy-encoding"},
        {std::string("[\0A\0]\0", 6), "legacy-encoding"},
        {"a=b\n[Aliases]\r\nLab =\r\n\rOne = KEL7\nTwo = KEL7\n[Open\n",
         "legacy-line-ignored:1 legacy-line-ignored:3 legacy-line-ignored:7 legacy-duplicate:5"},
        {"[Aliases]\nA = kel1\nB = KEL01\nC = KEL\nD = KEL4294967295\nE = KEL4294967294\n[Alias0]\nAlias=x\n",
         "legacy-resource-name:2 legacy-resource-name:3 legacy-resource-name:4 legacy-resource-name:5 "
         "legacy-other-layout:7"},
        {tokens + "[Alias0]\nAlias=x\nPersistentToken=t\nLocal=False\n[Alias1]\nAlias=y\nPersistentToken=t\n"
                  "Local=true\n[Alias3]\nAlias=z\n[Aliases]\nA=b\n",
         "legacy-not-local:4 legacy-duplicate:8 legacy-behind-gap:12 legacy-other-layout:15"},
        {tokens + "[Alias0]\nAlias=x\nPersistentToken=t\nLocal=yes\n", "legacy-malformed:7"},
        {tokens + "\n[Alias0]\nAlias=x\nLocal=True\n", "legacy-malformed:5"},
    };
    installSimulated("a", "token=a number=0\n");
    for (const auto& each : cases) {
        writeFile(machine.configurationFolder() / "vykel.ini", each.text);
        diagnose();
        EXPECT_EQ(findings(), each.findings) << each.text;
        EXPECT_EQ(readFile(machine.configurationFolder() / "vykel.ini"), each.text);
    }
    std::string text = "[Aliases]\nLab = KEL0\n";
    for (int i = 0; i < 23; ++i)
        text += "x\n";
    writeFile(machine.configurationFolder() / "vykel.ini", text);
    fs::create_directory(machine.configurationFolder() / "vykel.TMP"); // the name of the file to be saved
    diagnose();
    const Json& all = report["findings"];
    ASSERT_EQ(all.size(), 22u);
    EXPECT_EQ(all[20]["id"], "legacy-not-writable");
    EXPECT_EQ(all[21]["detail"], "3 more");
}

TEST_F(DoctorTest, BundlesWhatSupportNeedsAndNoMore) {
    installSimulated("a", "token=a number=0\n");
    writeFile(machine.configurationFolder() / "vykel.ini", "[Aliases]\nLab = KEL0\n");
    const fs::path path = machine.folder() / "bundle.zip";
    const std::string arguments = "doctor --bundle \"" + path.string() + "\"";
    const ProgramResult first = runProgram("vykeldev", arguments);
    EXPECT_EQ(first.exitCode, 0);
    const std::string archive = readFile(path);
    std::string names;
    std::string last;
    for (std::size_t at = 0; archive.compare(at, 4, "PK\x03\x04") == 0;) {
        const auto byte = [&](std::size_t offset) {
            return static_cast<unsigned char>(archive.at(at + offset));
        };
        const std::size_t size = byte(18) + 256u * byte(19);
        const std::string name = archive.substr(at + 30, byte(26));
        EXPECT_NE(first.output.find("  " + name + ", " + std::to_string(size) + " bytes"), std::string::npos);
        names += name + ' ';
        last = archive.substr(at + 30 + name.size(), size);
        at += 30 + name.size() + size;
    }
    EXPECT_EQ(names, "account.json registrations.json locks.json versions.json vykel.ini ");
    EXPECT_EQ(last, "[Aliases]\nLab = KEL0\n");
    EXPECT_EQ(runProgram("vykeldev", arguments).exitCode, 1); // it is there already
    EXPECT_EQ(runProgram("vykeldev", arguments + " --force").exitCode, 0);
}

TEST(DoctorDocument, ListsEveryFinding) {
    const std::string document = replaced(readFile(fs::path(VYKEL_DOCS) / "troubleshooting.md"), "\r", "");
    std::istringstream table(replaced(runProgram("vykeldev", "doctor --list-findings").output, "\r", ""));
    std::size_t count = 0;
    for (std::string name, severity, meaning, remedy; std::getline(table, name, '\t'); ++count) {
        std::getline(std::getline(std::getline(table, severity, '\t'), meaning, '\t'), remedy);
        const std::string section =
            "### `" + name + "` (" + severity + ")\n\n" + meaning + "\n\n**What to do:** " + remedy + "\n";
        EXPECT_NE(document.find(section), std::string::npos) << section;
    }
    std::size_t sections = 0;
    for (std::size_t at = document.find("\n### `"); at != std::string::npos;
         at = document.find("\n### `", at + 1))
        ++sections;
    EXPECT_EQ(sections, count);
    EXPECT_GT(count, 30u);
}

} // namespace
} // namespace vykeltest
