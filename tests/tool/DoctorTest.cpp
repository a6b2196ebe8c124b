#include "pellumkelddk/user/FileLock.h"
#include "tool/Tool.h"
#include "vyfile/internal/FileLockImpl.h"
#include <cstdlib>
#include <iterator>
#include <sstream>

namespace vykeltest {
namespace {

class DoctorTest : public ToolTest {
protected:
    DoctorTest() { installSimulated("a", "token=a number=0\n"); }

    int exitCode = -1;
    Json report;
    const fs::path plugin = folder / (std::string("a") + pluginExtension);
    const fs::path legacyFile = configuration / "vykel.ini";

    /// Returns the findings.
    std::string diagnose(const std::string& options = "") {
        const ProgramResult result = runProgram("vykeldev", "doctor --json " + options);
        exitCode = result.exitCode;
        report = Json::parse(result.output);
        EXPECT_EQ(report["state"], exitCode == 0 ? "healthy" : exitCode == 4 ? "warnings" : "broken");
        return findings();
    }

    /// A plug-in that lists the devices of these lines.
    void installSimulated(const std::string& name, const std::string& devices) {
        machine.install("simulated", name);
        setDevices(name, devices);
    }

    /// Registers a file of these bytes.
    fs::path installBytes(const std::string& name, const std::string& bytes) {
        const fs::path path = folder / (name + pluginExtension);
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

    /// What became of a plug-in, where, and the findings about it.
    std::string account(std::size_t index) const {
        const Json& of = report["plugins"].at(index);
        return replaced(of["outcome"].dump() + " at " + of["failedStep"].dump() + ": ", "\"", "") +
               findings(of["name"]);
    }
};

TEST_F(DoctorTest, AccountsForEveryFileThatDoesNotLoad) {
    const std::string library = readFile(builtLibrary("simulated"));
    std::string otherMachine = library;
    otherMachine[isWindows ? library.find(std::string("PE\0\0", 4)) + 4 : 18] = 3;
    const auto importing = [&](const char* name) {
        return isWindows ? replaced(library, "msvcrt.dll", name)
                         : replaced(library, "libwinhost.so", "libwinhosx.so");
    };
    if (isWindows) {
        writeFile(folder / "helper.dll", importing("msvcrx.dll"));
        writeFile(folder / "itself.dll", importing("itself.dll"));
        setEnvironment("PATH", folder.string());
    }
    const DWORD text = REG_SZ;
    machine.registerPlugin("b", nullptr, nullptr, 0);
    machine.registerPlugin("b2", &text, "", 0);
    machine.registerPlugin("c", folder);
    machine.registerPlugin("d", folder / "nothing");
    fs::resize_file(installBytes("d2", ""), (256u << 20) + 1);
    installBytes("e", "no library");
    installBytes("f", library.substr(0, 200));
    installBytes("g", otherMachine);
    installBytes("h", importing("msvcrx.dll"));
    machine.install("zoo_plugin_without_finalize", "i");
    installBytes("k", importing("helper.dll"));
    installBytes("l", importing("itself.dll"));
    EXPECT_EQ((diagnose(), exitCode), 5);
    const struct {
        const char* account;
        const char* detail = ""; ///< part of it
        bool fromHeaders = false;
    } expected[] = {
        {"loaded at null: "},
        {"failed at registry value: value-missing"},
        {"failed at path: path-empty"},
        {"failed at path: path-empty"},
        {"failed at file: file-missing"},
        {"failed at file: file-unreadable"},
        {"failed at file: file-not-a-library", "not a Windows library", true},
        {"failed at file: file-not-a-library", "cut off", true},
        {"failed at architecture: architecture-wrong", "not for x64", true},
        {"failed at dependency: dependency-missing", "not found: msvcrx.dll (", true},
        {"failed at entry point: entry-point-missing", isWindows ? "missing: vykel_finalizePlugin" : ""},
        {"failed at dependency: dependency-missing", "msvcrx.dll (imported by helper.dll)", true},
        {"failed at load: load-refused"}};
    const std::size_t count = std::size(expected);
    for (std::size_t i = 0; i < count; ++i) {
        const bool refused = expected[i].fromHeaders && !isWindows; // there the loader reads them
        EXPECT_EQ(account(i), refused ? "failed at load: load-refused" : expected[i].account) << i;
        expectPart(report["plugins"][i]["detail"], refused ? "code -52005" : expected[i].detail);
    }
    EXPECT_EQ(report["counts"],
              Json({{"registered", count}, {"loaded", 1}, {"refused", 0}, {"failed", count - 1}}));
    if (isWindows)
        expectPart(run("check " + argument(folder / "h.dll")), "; not found: msvcrx.dll\n");
    const Json& missingFile = report["plugins"][4];
    EXPECT_EQ(missingFile["system"]["code"], ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(missingFile["error"]["document"]["vydynlib_debug"]["path"], missingFile["path"]);
}

TEST_F(DoctorTest, NamesWhatAPluginDoesAndGoesOn) {
    const std::pair<std::string, std::string> cases[] = {
        {"refuses_initialize", "refused at initialise: plugin-refused"},
        {"makes_no_list", "refused at list: plugin-refused"},
        {"null_list", "failed at list: list-missing"},
        {"throws_own_type", "failed at refresh: plugin-threw"},
        {"fails_refreshing", "failed at refresh: refresh-failed"},
        {"refuses_device", "failed at refresh: device-refused"},
        {"exits", "failed at refresh: plugin-exited"},
        {"hangs", "failed at refresh: plugin-hung"},
        {"floods", "failed at refresh: plugin-hung"},
        {"fails_refreshing,crashes_releasing", "failed at unload: plugin-crashed"},
        {"crashes_refreshing", "failed at refresh: plugin-crashed"}};
    machine.install("zoo_plugin", "b");
    installSimulated("c", "token=c number=1\n");
    for (const auto& [fault, expected] : cases) {
        breakRule(fault);
        diagnose(fault == "hangs" || fault == "floods" ? "--timeout 3" : "--timeout 50");
        EXPECT_EQ(account(0) + account(1) + account(2), "loaded at null: " + expected + "loaded at null: ");
        EXPECT_EQ(exitCode, expected.rfind("refused", 0) == 0 ? 4 : 5) << fault;
        EXPECT_EQ(report["plugins"][1]["deviceNumbers"], // it lists one before the one that it refuses
                  fault == "refuses_device" ? Json({7}) : Json::array());
    }
}

TEST_F(DoctorTest, WarnsOfSlowRefreshesAndBadTexts) {
    machine.install("zoo_plugin", "b");
    breakRule("slow_refresh,one_token,latin_1_token,null_token");
    diagnose("--timeout 50");
    EXPECT_EQ(account(1), "loaded at null: refresh-slow text-not-utf8 token-missing token-duplicate");
    expectPart(report["findings"].dump(), "the token of device 0 in format 2 is null");
}

TEST_F(DoctorTest, ChecksRegistrationsAndNumbers) {
    machine.setPluginsKey(false);
    EXPECT_EQ(diagnose(), "plugins-key-missing");
    machine.setPluginsKey(true);
    EXPECT_EQ(diagnose(), "plugins-none");
    expectPart(run("doctor"), "0 errors, 1 warning\n");
    std::string devices = "token=x number=1000\ntoken=y\n";
    for (int i = 0; i <= 1000; ++i)
        devices += "token=" + std::to_string(i) + " number=" + std::to_string(i) + '\n';
    installSimulated("a", devices);
    installSimulated("z", "token=\"z 1\" alias=Pump number=2000\ntoken=z2\n");
    expectPart(run("doctor --devices"), "\nz        KEL2000  Pump   z 1\nz        -        -      z2\n\n");
    diagnose("--devices");
    EXPECT_EQ(report["plugins"].back()["deviceList"].dump(),
              R"([{"alias":"Pump","number":2000,"token":"z 1"},{"alias":null,"number":null,"token":"z2"}])");
    const WideString text = plugin.string<WCHAR>();
    const DWORD types[] = {REG_BINARY, REG_SZ};
    machine.registerPlugin("b", &types[0], text.c_str(), (text.size() + 1) * sizeof(WCHAR));
    // No 0 may follow the unterminated text: the system would store it, too.
    machine.registerPlugin("c", &types[1], (text + WCHAR{'x'}).c_str(), text.size() * sizeof(WCHAR));
    const std::pair<fs::path, std::string> cases[] = {
        {"", "loaded at null: number-missing"},
        {"", "loaded at null: value-type path-duplicate number-missing"},
        {"", "loaded at null: value-unterminated path-duplicate number-missing"},
        {"relative.x", "failed at path: path-relative file-missing"},
        {folder / std::string(40000, 'x'), "failed at path: file-missing"}, // too long for a command line
        {'"' + plugin.string() + '"', "failed at path: file-missing"},      // not also "path-relative"
        {plugin.string() + "x ", "failed at file: file-missing"},
        {folder / "." / plugin.filename(), "loaded at null: path-duplicate number-missing"}};
    for (std::size_t i = 3; i < std::size(cases); ++i)
        machine.registerPlugin("d" + std::to_string(i), cases[i].first);
    diagnose();
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(account(i), cases[i].second) << i;
    EXPECT_EQ(report["plugins"][0]["deviceNumbers"].size(), 1003u);
    expectPart(report["plugins"][6]["detail"], "with a blank: remove it");
    for (const char* const key : {"b", "c", "d7"})
        expectPart(run(std::string("unregister ") + key), "= 0");
    const std::string output = run("doctor");
    expectPart(output, "error number-duplicate: number 1000\n  seen:       a[0], a[1002]\n");
    expectPart(output, "info number-missing: a\n");
    fs::permissions(plugin, fs::perms::others_write, fs::perm_options::add);
    fs::permissions(folder, fs::perms::others_write, fs::perm_options::add);
    diagnose();
    EXPECT_EQ(findings("a"), isWindows ? "number-missing" : "file-writable file-writable number-missing");
    diagnose("--library " + argument(plugin));
    EXPECT_EQ(findings(plugin.string()), "library-missing");
}

TEST_F(DoctorTest, ChecksFolderAndLocks) {
    {
        const vykel::FileStream stream = vykel::openLockFile((configuration / "vykel.lck").string().c_str());
        vyfile::FileLockImpl lock(stream.get());
        lock.lock();
        EXPECT_EQ(diagnose(), "lock-held");
        EXPECT_EQ(report["legacyFile"]["state"], "not read");
        EXPECT_EQ(report["locks"][0]["state"], "free");
        EXPECT_GE(report["locks"][1]["secondsWaited"], 1.9);
        EXPECT_EQ(run("aliases"), "= 1"); // and does not wait for good
        expectPart(run("check --rule alias-kept " + argument(plugin) + "--timeout 9"),
                   "vykel.lck cannot be locked");
    }
    fs::create_hard_link(plugin, legacyFile);
    fs::create_hard_link(plugin, configuration / "vykel.TMP");
    EXPECT_EQ(diagnose(), "folder-link folder-link");
    EXPECT_EQ(report["legacyFile"]["state"], "not read");
    fs::remove(legacyFile);
    fs::remove(configuration / "vykel.TMP");
    fs::remove(configuration / "DeviceList.lck");
    fs::create_directory(configuration / "DeviceList.lck");
    EXPECT_EQ(diagnose(), "lock-unusable");
    machine.setConfigurationFolder(false);
    EXPECT_EQ(diagnose(), "folder-missing");
    if (isWindows)
        return;
    machine.setConfigurationFolder(true);
    fs::create_symlink("missing", legacyFile);
    EXPECT_EQ(diagnose(), "folder-link");
    machine.setConfigurationFolder(false);
    fs::create_directory_symlink("/proc", configuration); // not even root makes files there
    EXPECT_EQ(diagnose(), "folder-read-only lock-unusable lock-unusable");
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
        writeFile(legacyFile, each.text);
        EXPECT_EQ(diagnose(), each.findings) << each.text;
        EXPECT_EQ(readFile(legacyFile), each.text);
    }
    std::string text = "[Aliases]\nLab = KEL0\n";
    for (int i = 0; i < 23; ++i)
        text += "x\n";
    writeFile(legacyFile, text);
    fs::create_directory(configuration / "vykel.TMP"); // the name of the file to be saved
    diagnose();
    const Json& all = report["findings"];
    ASSERT_EQ(all.size(), 22u);
    EXPECT_EQ(all[20]["id"], "legacy-not-writable");
    EXPECT_EQ(all[21]["detail"], "3 more");
    EXPECT_EQ(report["legacyFile"]["layout"], "resource names");
}

TEST_F(DoctorTest, BundlesWhatSupportNeedsAndNoMore) {
    writeFile(legacyFile,
              "password\n[ aliases ]\nLab = KEL0\r\n [x]\rpassword\n\n[General]\n[password\nz=y\n");
    const std::string path = (folder / "bundle.zip").string();
    const std::string bundle = "doctor --bundle " + argument(path);
    diagnose("--bundle " + argument(path));
    expectPart(run(bundle), "= 1"); // it exists already
    expectPart(run(bundle + "--force"), "\nleft out: 5 lines of vykel.ini that are not about aliases\n= 4");
    if (isWindows)
        return;
    const std::string judge = "zip = zipfile.ZipFile('" + path + R"(')
assert zip.testzip() is None and open(zip.filename, 'rb').read()[-14:-10] == b'\5\0\5\0' # entries
parts = {name: zip.read(name) for name in zip.namelist()}
out = b'; left out'
assert parts.pop('vykel.ini').replace(out, b'x') == b'x\n[ aliases ]\nLab = KEL0\r\nx\rx\n\n[General]\nx\nx\n'
assert b'password' not in b''.join(parts.values())
parts = {name: json.loads(text) for name, text in parts.items()}
assert list(parts) == ['account.json', 'registrations.json', 'locks.json', 'versions.json']
assert parts['registrations.json'][0]['type'] == 1 and parts['account.json']['state'] == 'warnings')";
    writeFile(folder / "judge.py", "import json, zipfile\n" + judge);
    EXPECT_EQ(std::system(("python3 " + argument(folder / "judge.py")).c_str()), 0);
    fs::remove(path);
    fs::create_symlink("/dev/full", path);
    expectPart(run(bundle + "--force"), "= 1");
    EXPECT_FALSE(fs::is_symlink(path)); // half a bundle does not stay
}

TEST_F(DoctorTest, IsDocumentedWithEveryFinding) {
    const std::string document = readText(fs::path(VYKEL_DOCS) / "troubleshooting.md");
    std::istringstream table(replaced(run("doctor --list-findings"), "= 0", ""));
    std::size_t count = 0;
    for (std::string name, severity, meaning, remedy; std::getline(table, name, '\t'); ++count) {
        std::getline(std::getline(std::getline(table, severity, '\t'), meaning, '\t'), remedy);
        expectPart(document, "### `" + name + "` (" + severity + ")\n\n" + meaning + "\n\n**What to do:** " +
                                 remedy + "\n");
    }
    for (std::size_t at = document.find("\n### `"); at != std::string::npos; --count)
        at = document.find("\n### `", at + 1);
    EXPECT_EQ(count, 0u);
}

} // namespace
} // namespace vykeltest
