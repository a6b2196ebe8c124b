#include "pellumkelddk/user/FileLock.h"
#include "support/Machine.h"
#include "support/TestFiles.h"
#include "vyfile/internal/FileLockImpl.h"
#include <cstdlib>
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
    DoctorTest() { installSimulated("a", "token=a number=0\n"); }

    Machine machine;
    fs::path folder = machine.configurationFolder();
    int exitCode = -1;
    Json report;

    void diagnose(const std::string& options = "") {
        const ProgramResult result = runProgram("vykeldev", "doctor --json " + options);
        exitCode = result.exitCode;
        report = Json::parse(result.output);
        EXPECT_EQ(report["state"], exitCode == 0 ? "healthy" : exitCode == 4 ? "warnings" : "broken");
    }

    static std::string textReport(const std::string& options = "") {
        return replaced(runProgram("vykeldev", "doctor " + options).output, "\r", "");
    }

    /// A plug-in that lists the devices of these lines.
    void installSimulated(const std::string& name, const std::string& devices) {
        machine.install("simulated", name);
        writeFile(machine.folder() / (name + ".devices"), devices);
    }

    /// Registers a file of these bytes.
    fs::path installBytes(const std::string& name, const std::string& bytes) {
        const fs::path path = machine.folder() / (name + pluginExtension);
        writeFile(path, bytes);
        machine.registerPlugin(name, path);
        return path;
    }

    /// The findings about a subject, or about all: "identifier", with ":line" where there is one.
    std::string findings(const std::string& subject = "") const {
        std::string text;
        for (const Json& finding : report["findings"])
            if (subject.empty() || finding["subject"] == subject)
                text += (text.empty() ? "" : " ") + finding["id"].get<std::string>() +
                        (finding["line"].is_null() ? "" : ":" + finding["line"].dump());
        return text;
    }

    std::string outcome(std::size_t index) const {
        const Json& plugin = report["plugins"].at(index);
        return replaced(plugin["outcome"].get<std::string>() + " at " + plugin["failedStep"].dump(), "\"",
                        "");
    }
};

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
    machine.registerPlugin("b", nullptr, nullptr, 0);
    machine.registerPlugin("b2", &text, "", 0);
    machine.registerPlugin("c", machine.folder());
    machine.registerPlugin("d", machine.folder() / "nothing");
    fs::resize_file(installBytes("d2", ""), (256u << 20) + 1);
    installBytes("e", "no library");
    installBytes("f", library.substr(0, 200));
    installBytes("g", otherMachine);
    installBytes("h", importing("msvcrx.dll"));
    machine.install("zoo_plugin_without_finalize", "i");
    installBytes("k", importing("helper.dll"));
    installBytes("l", importing("itself.dll"));
    diagnose();
    // The host's doctor leaves a library's headers to the loader.
    const struct {
        const char* name;
        const char* outcome;
        const char* finding;
        const char* detail = ""; ///< part of it
        bool fromHeaders = false;
    } expected[] = {
        {"a", "loaded at null", ""},
        {"b", "failed at registry value", "value-missing"},
        {"b2", "failed at path", "path-empty"},
        {"c", "failed at path", "path-empty"},
        {"d", "failed at file", "file-missing"},
        {"d2", "failed at file", "file-unreadable"},
        {"e", "failed at file", "file-not-a-library", "not a Windows library", true},
        {"f", "failed at file", "file-not-a-library", "cut off", true},
        {"g", "failed at architecture", "architecture-wrong", "not for x64", true},
        {"h", "failed at dependency", "dependency-missing", "not found: msvcrx.dll (", true},
        {"i", "failed at entry point", "entry-point-missing",
         isWindows ? "missing: vykel_finalizePlugin" : ""},
        {"k", "failed at dependency", "dependency-missing", "msvcrx.dll (imported by helper.dll)", true},
        {"l", "failed at load", "load-refused"}};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        const bool refused = expected[i].fromHeaders && !isWindows;
        EXPECT_EQ(outcome(i), refused ? "failed at load" : expected[i].outcome) << i;
        EXPECT_EQ(findings(expected[i].name), refused ? "load-refused" : expected[i].finding) << i;
        const std::string detail = report["plugins"][i]["detail"];
        EXPECT_NE(detail.find(refused ? "code -52005" : expected[i].detail), std::string::npos) << detail;
    }
    EXPECT_EQ(exitCode, 5);
    const std::size_t count = std::size(expected);
    EXPECT_EQ(report["counts"],
              Json({{"registered", count}, {"loaded", 1}, {"refused", 0}, {"failed", count - 1}}));
    const Json& missingFile = report["plugins"][4];
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
    machine.install("zoo_plugin", "b");
    installSimulated("c", "token=c number=1\n");
    for (const auto& each : cases) {
        SCOPED_TRACE(each.fault);
        setEnvironment("VYKEL_ZOO_FAULT", each.fault);
        diagnose(each.finding == std::string("plugin-hung") ? "--timeout 3" : "--timeout 50");
        EXPECT_EQ(exitCode, each.exitCode);
        EXPECT_EQ(outcome(0) + ", " + outcome(1) + ", " + outcome(2),
                  std::string("loaded at null, ") + each.outcome + ", loaded at null");
        EXPECT_EQ(findings(), each.finding);
        const bool lists = each.finding == std::string("device-refused"); // it lists one before that
        EXPECT_EQ(report["plugins"][1]["deviceNumbers"], lists ? Json({7}) : Json::array());
    }
}

TEST_F(DoctorTest, ChecksRegistrationsAndNumbers) {
    machine.setPluginsKey(false);
    diagnose();
    EXPECT_EQ(findings(), "plugins-key-missing");
    machine.setPluginsKey(true);
    diagnose();
    EXPECT_EQ(findings(), "plugins-none");
    EXPECT_NE(textReport().find("0 errors, 1 warning\n"), std::string::npos);
    std::string devices = "token=x number=1000\ntoken=y\n";
    for (int i = 0; i <= 1000; ++i)
        devices += "token=" + std::to_string(i) + " number=" + std::to_string(i) + '\n';
    installSimulated("a", devices);
    const fs::path path = machine.folder() / (std::string("a") + pluginExtension);
    const WideString text = path.string<WCHAR>();
    const DWORD types[] = {REG_BINARY, REG_SZ};
    machine.registerPlugin("b", &types[0], text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    // No 0 may follow the unterminated text: the system would store it, too.
    machine.registerPlugin("c", &types[1], (text + WCHAR{'x'}).c_str(), text.size() * sizeof(WCHAR));
    const std::pair<fs::path, const char*> others[] = {
        {"relative" + path.filename().string(), "path-relative file-missing"},
        {path.parent_path() / std::string(40000, 'x'), "file-missing"}, // too long for a command line
        {'"' + path.string() + '"', "file-missing"},                    // not also "path-relative"
        {path.string() + "x ", "file-missing"},
        {path.parent_path() / "." / path.filename(), "path-duplicate number-missing"}};
    for (std::size_t i = 0; i < std::size(others); ++i)
        machine.registerPlugin("d" + std::to_string(i), others[i].first);
    diagnose();
    EXPECT_EQ(findings("a"), "number-missing");
    EXPECT_EQ(report["plugins"][0]["deviceNumbers"].size(), 1003u);
    EXPECT_EQ(findings("b"), "value-type path-duplicate number-missing");
    EXPECT_EQ(findings("c"), "value-unterminated path-duplicate number-missing");
    for (std::size_t i = 0; i < std::size(others); ++i)
        EXPECT_EQ(findings("d" + std::to_string(i)), others[i].second) << i;
    EXPECT_NE(report["plugins"][6]["detail"].get<std::string>().find("with a blank: remove it"),
              std::string::npos);
    for (const char* const key : {"b", "c", "d4"})
        ASSERT_EQ(runProgram("vykeldev", std::string("unregister ") + key).exitCode, 0);
    const std::string output = textReport();
    for (const char* const part :
         {"error number-duplicate: number 1000\n  seen:       a[0], a[1002]\n", "info number-missing: a\n"})
        EXPECT_NE(output.find(part), std::string::npos) << output;
    diagnose("--library \"" + path.string() + '"');
    EXPECT_EQ(findings(path.string()), "library-missing");
}

TEST_F(DoctorTest, ChecksFolderAndLocks) {
    {
        const std::string path = (folder / "vykel.lck").string();
        const vykel::FileStream stream = vykel::openLockFile(path.c_str());
        vyfile::FileLockImpl lock(stream.get());
        lock.lock();
        diagnose();
        EXPECT_EQ(findings(), "lock-held");
        EXPECT_EQ(report["legacyFile"]["state"], "not read");
        EXPECT_EQ(runProgram("vykeldev", "aliases").exitCode, 1); // and does not wait for good
        EXPECT_EQ(report["locks"][0]["state"], "free");
        EXPECT_GE(report["locks"][1]["secondsWaited"], 1.9);
        const std::string plugin = (machine.folder() / "a").string() + pluginExtension;
        const ProgramResult check = runProgram("vykeldev", "check --rule alias-kept \"" + plugin + '"');
        EXPECT_NE(check.output.find("vykel.lck cannot be locked"), std::string::npos) << check.output;
    }
    fs::remove(folder / "DeviceList.lck");
    fs::create_directory(folder / "DeviceList.lck");
    diagnose();
    EXPECT_EQ(findings(), "lock-unusable");
    machine.setConfigurationFolder(false);
    diagnose();
    EXPECT_EQ(findings(), "folder-missing");
    if (isWindows)
        return;
    fs::create_directory_symlink("/proc", folder); // not even root makes files there
    diagnose();
    EXPECT_EQ(findings(), "folder-read-only lock-unusable lock-unusable");
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
    for (const auto& each : cases) {
        writeFile(folder / "vykel.ini", each.text);
        diagnose();
        EXPECT_EQ(findings(), each.findings) << each.text;
        EXPECT_EQ(readFile(folder / "vykel.ini"), each.text);
    }
    std::string text = "[Aliases]\nLab = KEL0\n";
    for (int i = 0; i < 23; ++i)
        text += "x\n";
    writeFile(folder / "vykel.ini", text);
    fs::create_directory(folder / "vykel.TMP"); // the name of the file to be saved
    diagnose();
    const Json& all = report["findings"];
    ASSERT_EQ(all.size(), 22u);
    EXPECT_EQ(all[20]["id"], "legacy-not-writable");
    EXPECT_EQ(all[21]["detail"], "3 more");
    EXPECT_EQ(report["legacyFile"]["layout"], "resource names");
}

TEST_F(DoctorTest, BundlesWhatSupportNeedsAndNoMore) {
    writeFile(folder / "vykel.ini", "[Aliases]\nLab = KEL0\n");
    const std::string path = (machine.folder() / "bundle.zip").string();
    diagnose("--bundle \"" + path + '"');
    EXPECT_EQ(exitCode, 0);
    EXPECT_EQ(runProgram("vykeldev", "doctor --bundle \"" + path + '"').exitCode, 1); // it exists already
    const std::string again = textReport("--force --bundle \"" + path + '"');
    EXPECT_NE(again.find("\n  vykel.ini, 21 bytes\n"), std::string::npos) << again;
    if (isWindows)
        return;
    const std::string judge = "zip = zipfile.ZipFile('" + path + R"(')
assert zip.testzip() is None and open(zip.filename, 'rb').read()[-14:-10] == b'\5\0\5\0' # entries
parts = {name: zip.read(name) for name in zip.namelist()}
assert parts.pop('vykel.ini') == b'[Aliases]\nLab = KEL0\n'
parts = {name: json.loads(text) for name, text in parts.items()}
assert list(parts) == ['account.json', 'registrations.json', 'locks.json', 'versions.json']
assert parts['registrations.json'][0]['type'] == 1 and parts['account.json']['state'] == 'healthy')";
    writeFile(machine.folder() / "judge.py", "import json, zipfile\n" + judge);
    EXPECT_EQ(std::system(("python3 '" + (machine.folder() / "judge.py").string() + "'").c_str()), 0);
    fs::remove(path);
    fs::create_symlink("/dev/full", path);
    EXPECT_EQ(runProgram("vykeldev", "doctor --force --bundle '" + path + "'").exitCode, 1);
    EXPECT_FALSE(fs::is_symlink(path)); // half a bundle does not stay
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
    for (std::size_t at = document.find("\n### `"); at != std::string::npos; --count)
        at = document.find("\n### `", at + 1);
    EXPECT_EQ(count, 0u);
}

} // namespace
} // namespace vykeltest
