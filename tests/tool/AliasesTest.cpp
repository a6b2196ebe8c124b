// What vykeldev aliases predicts for each entry, that it changes nothing, and that the next refresh then does
// just that.
#include "tool/Tool.h"
#include <map>
#include <set>

namespace vykeltest {
namespace {

const std::string devices = "token=T0 number=0 alias=\"\"\n"
                            "token=T1 number=1 alias=Named\n"
                            "token=T2 number=2\n"              // takes no alias
                            "token=T3 token2=U3 alias=\"\"\n"; // KEL3 from the next refresh on

const std::string version15 = "[General]\nMajorVersion=15\nMinorVersion=0\n";
const std::string version147 = "[General]\nMajorVersion=14\nMinorVersion=7\n";

std::string record(const char* section, const char* alias, const char* token, const char* local) {
    return std::string("[") + section + "]\nAlias=\"" + alias + "\"\nPersistentToken=" + token +
           "\nLocal=" + local + "\n";
}

const std::string unusable = "|unreached||not a resource name: expected KEL and a number, such as KEL3|stays";

struct Row {
    const char* reason;
    std::string file;
    std::vector<std::string> entries; ///< line, alias, target, outcome, device, detail, fate of the entry
};

const Row rows[] = {
    {"no entries", "; nothing\n", {}},
    {"each fate of a resource name; a new device counts with its coming number",
     "[Aliases]\nLab=KEL0\nOld=KEL1\nNone=KEL2\nNew=KEL3\nGone=KEL9\n" +
         record("Alias0", "Lab", "T0", "True"),
     {"2|Lab|KEL0|moves|0||leaves", "3|Old|KEL1|dropped|1||leaves", "4|None|KEL2|no-device|||stays",
      "5|New|KEL3|moves|3||leaves", "6|Gone|KEL9|no-device|||stays",
      "7|Lab|T0|unreached||the file's version asks for resource names|stays"}},
    {"the later of equal resource names counts",
     "[Aliases]\nOne=KEL0\nTwo=KEL0\nGone=KEL9\n",
     {"2|One|KEL0|unreached||line 3 names the same device|stays", "3|Two|KEL0|moves|0||leaves",
      "4|Gone|KEL9|no-device|||stays"}},
    {"values that name no device",
     "[Aliases]\nLab=kel0\nTwo=KEL00\nNone=KEL4294967295\n",
     {"2|Lab|kel0" + unusable, "3|Two|KEL00" + unusable, "4|None|KEL4294967295" + unusable}},
    {"of equal names that were split the first is removed in place of the other",
     "[Aliases]\nLab Line0001=KEL9\nLab=KEL0\n",
     {"2|Lab|KEL9|no-device|||leaves", "3|Lab|KEL0|moves|0||stays"}},
    {"the earlier is removed with the section",
     "[Aliases]\nOne=KEL0\nTwo=KEL0\n",
     {"2|One|KEL0|unreached||line 3 names the same device|leaves", "3|Two|KEL0|moves|0||leaves"}},
    {"each fate of a token; aliases may be equal",
     version15 + record("Alias0", "Twin", "T0", "True") + record("alias1", "Twin", "T1", "True") +
         record("Alias2", "Far", "T8", "False") + record("Alias3", "a\\\\b", "U3", "TRUE") +
         record("Alias4", "Twin", "T9", "True") + record("Alias5", "Late", "T9", "True") +
         record("Alias7", "Lost", "T0", "True"),
     {"4|Twin|T0|moves|0||leaves", "8|Twin|T1|dropped|1||leaves", "12|Far|T8|not-local|||stays",
      "16|a\\\\b|U3|moves|3||leaves", "20|Twin|T9|no-device|||stays",
      "24|Late|T9|unreached||line 20 has the same token|stays",
      "28|Lost|T0|unreached||there is no Alias6|stays"}},
    {"one that is not local hides the next of its token",
     version15 + record("Alias0", "A", "T0", "False") + record("Alias1", "B", "T0", "True"),
     {"4|A|T0|not-local|||stays", "8|B|T0|unreached||line 4 has the same token|stays"}},
    {"tokens of the older format",
     version147 + "[Aliases]\nA=KEL0\n" + record("Alias0", "B", "T3", "True"),
     {"5|A|KEL0|unreached||the file's version asks for tokens|stays", "6|B|T3|moves|3||leaves"}},
    {"malformed ones hold all others up",
     version15 + record("Alias0", "A", "T0", "True") + record("Alias1", "B", "T1", "yes") +
         "[Alias2]\nAlias=C\nLocal=True\n",
     {"4|A|T0|blocked|||stays", "11|B|T1|malformed||Local is 'yes', neither True nor False|stays",
      "12|C||malformed||PersistentToken is missing or empty|stays"}},
};

std::vector<std::string> describe(const Json& entries) {
    std::vector<std::string> texts;
    for (const Json& entry : entries) {
        std::string& text = texts.emplace_back();
        for (const char* const key : {"line", "alias", "target", "outcome", "device", "detail"})
            text += replaced(replaced(entry[key].dump(), "\"", ""), "null", "") + "|";
        text += entry["stays"] ? "stays" : "leaves";
    }
    return texts;
}

class AliasesTest : public ToolTest {
protected:
    AliasesTest() {
        machine.install("simulated", "sim");
        setDevices("sim", devices);
    }

    const fs::path legacyFile = configuration / "vykel.ini";

    /// Everything that a move of aliases, a numbering or a lock would change.
    std::map<std::string, std::string> content() const {
        std::map<std::string, std::string> files{{"devices", readFile(folder / "sim.devices")}};
        for (const auto& file : fs::directory_iterator(configuration))
            files[file.path().filename().string()] =
                std::to_string(file.last_write_time().time_since_epoch().count()) + readFile(file.path());
        return files;
    }

    /// Refreshes, and compares the forecast with what then is.
    void compareWithRefresh(const Json& forecast) {
        std::map<Json, Json> aliasOf; // by number
        const Json listed = runJson("list", 0);
        for (const Json& device : listed["devices"])
            aliasOf[device["number"]] = device["alias"];
        std::multiset<Json> stayed; // sets, because the transfer writes its records last
        std::multiset<Json> left;
        for (const Json& entry : forecast["entries"]) {
            EXPECT_TRUE(entry["outcome"] != "moves" || aliasOf[entry["device"]] == entry["alias"]) << entry;
            if (entry["stays"])
                stayed.insert(entry["alias"]);
        }
        const Json after = runJson("aliases", 0);
        for (const Json& entry : after["entries"])
            left.insert(entry["alias"]);
        EXPECT_EQ(left, stayed);
    }
};

TEST_F(AliasesTest, PredictsTheNextRefreshAndChangesNothing) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.reason);
        setDevices("sim", devices);
        writeFile(legacyFile, row.file);
        const auto before = content();
        const bool malformed = row.file.find("Local=yes") != std::string::npos;
        const Json forecast = runJson("aliases", malformed ? 1 : 0);
        EXPECT_EQ(content(), before);
        EXPECT_EQ(forecast["layout"], row.file.rfind(version15, 0) == 0    ? "tokens of format 2"
                                      : row.file.rfind(version147, 0) == 0 ? "tokens of format 1"
                                                                           : "resource names");
        EXPECT_EQ(forecast["fails"], malformed);
        EXPECT_EQ(describe(forecast["entries"]), row.entries);
        if (!malformed)
            compareWithRefresh(forecast);
        else
            EXPECT_TRUE(runJson("list", 4).contains("refresh"));
    }
}

TEST_F(AliasesTest, SaysWhatMovesAndWhenThereIsNothingToRead) {
    writeFile(legacyFile, "[Aliases]\nLab=KEL0\nOld=KEL1\n");
    const std::string table = run("aliases");
    expectPart(table, "KEL0    moves to device KEL0");
    expectPart(table, "KEL1    device KEL1 has an alias; dropped");
    fs::remove(legacyFile);
    EXPECT_EQ(runJson("aliases", 3)["exists"], false);
    writeFile(legacyFile, std::string("\xFF\xFE[\0", 4));
    EXPECT_TRUE(runJson("aliases", 1).is_discarded());
    EXPECT_EQ(content().size(), 2u); // the two files of this test: no lock file was made
}

} // namespace
} // namespace vykeltest
