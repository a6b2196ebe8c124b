// The layouts of the legacy alias file: which device gets what, which bytes are left, and in which order the
// devices are asked.
#include "support/TransferMachine.h"
#include "support/Unwinding.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

struct DeviceRow {
    std::uint32_t number;
    const char* alias; ///< null: takes none
    const char* token;
    const char* aliasAfter;
    const char* calls; ///< n getNumber, a getAlias, t1 t2 getPersistentToken, S setAlias
};

struct Row {
    std::string before;
    std::vector<DeviceRow> devices;
    std::string after; ///< the saved file, before its line ends become CRLF; "=": not a byte changes
    std::int32_t code = success;
    std::uint32_t line = 0; ///< of the error
};

constexpr std::uint32_t none = vykel::noDeviceNumber;
const char* const longAlias =
    "an alias that is longer than the 80 bytes that a line may have where long values are split";
const std::string v15 = "[General]\nMajorVersion=15\nMinorVersion=0\n";

std::string record(int index, const std::string& alias, const std::string& token,
                   const std::string& local = "True") {
    return "[Alias" + std::to_string(index) + "]\nAlias=\"" + alias + "\"\nPersistentToken=\"" + token +
           "\"\nLocal=" + local + "\n";
}

/// A file of both layouts, of which the version chooses one.
Row version(const char* major, const std::string& minor, const char* calls) {
    const std::string version = "[General]\nMajorVersion=" + (major + ("\nMinorVersion=" + minor)) + "\n";
    const std::string names = "[Aliases]\nByName=KEL0\n";
    const std::string records = record(0, "ByToken", "T");
    const bool byName = calls == std::string("nanaS");
    return {version + names + records,
            {{0, "", "T", byName ? "ByName" : "ByToken", calls}},
            version + (byName ? records : names)};
}

/// A record that is malformed: no device is asked, and the file stays.
Row malformed(const std::string& record, std::uint32_t line) {
    return {v15 + record, {{0, "", "T", "", ""}}, "=", configurationFault, line};
}

const std::vector<Row>& rows() {
    static const std::vector<Row> table = {
        // Wide text is never read.
        {std::string("\xFF\xFE[\0A\0", 6), {{0, "", "T", "", ""}}, "="},
        // Devices without number or alias take no part.
        {"[Aliases]\nLab=KEL4294967295\nLab2=KEL1\n",
         {{none, "", "", "", "n"}, {1, nullptr, "", "", "na"}},
         "="},
        // A device that takes none any more when its turn comes costs the entry.
        {"[Aliases]\nA=KEL0\nB=KEL1\n", {{0, "", "fades", "", "nana"}}, "[Aliases]\nB=KEL1\n"},
        // An alias is taken as it stands, not decoded; comments and bad lines are not kept.
        {"; c\nlost=1\n[aliases]\nA\\tB=KEL0\nbad\n C = KEL7 \n",
         {{0, "", "", "A\\tB", "nanaS"}},
         "[aliases]\nC=KEL7\n"},
        // A second device of one number finds nothing any more.
        {"[Aliases]\nA=KEL0\n", {{0, "", "", "A", "nanaS"}, {0, "", "", "", "nan"}}, ""},
        // A refusal ends the run, the file stays.
        {"[Aliases]\nA=KEL0\nB=KEL1\n",
         {{0, "", "", "A", "nanaS"}, {1, "", "refuses", "", "nanaS"}},
         "=",
         -77},
        version("14", "7", "nat1aS"),
        version("14", "6", "nanaS"),
        version("13", "7", "nanaS"),
        version("+16", "9", "nat2aS"),
        version("-15", "0", "nanaS"),
        version("4294967296", "0", "nanaS"),
        // No minor version: by resource name.
        {"[General]\nMajorVersion=15\n[Aliases]\nA=KEL0\n",
         {{0, "", "T", "A", "nanaS"}},
         "[General]\nMajorVersion=15\n"},
        // Records are consumed by token, survivors renumbered in their order at the end.
        {v15 + record(0, "Red", "T1") + record(1, "Green", "T2", "False") + record(2, "Blue", "T3") +
             "[Tail]\nx=1\n",
         {{5, "", "T3", "Blue", "nat2aS"}, {6, "", "T2", "", "nat2"}, {7, "", "t1", "", "nat2"}},
         v15 + "[Tail]\nx=1\n" + record(0, "Red", "T1") + record(1, "Green", "T2", "False")},
        // A device without a token finds nothing.
        {v15 + record(0, "A", "null"), {{0, "", "null", "", "nat2"}}, "="},
        // Of equal tokens the first goes first.
        {v15 + record(0, "A", "T", "true ") + record(1, "B", "T", " TRUE"),
         {{0, "", "T", "A", "nat2aS"}, {1, "old", "T", "old", "nat2a"}, {2, "", "T", "", "nat2"}},
         v15},
        // Texts are decoded for the device and encoded again for the file.
        {v15 + record(0, "a\\tb\\x0d\\\"q\\\"\\xzz", "T0") + record(1, "c\\td\\x7f\\\\", "T1"),
         {{0, "", "T0", "a\tb\r\"q\"xzz", "nat2aS"}},
         v15 + record(0, "c\\td\\x7f\\\\", "T1")},
        // A long survivor is written in one line, without blanks at its ends.
        {v15 + record(0, longAlias, "T9") + record(1, "B", "T1") + record(2, "  x ", " T8 "),
         {{0, "", "T1", "B", "nat2aS"}},
         v15 + record(0, longAlias, "T9") + record(1, "x", "T8")},
        malformed("[Alias0]\nx=1\n", 280),
        malformed("[Alias0]\nAlias=A\n", 286),
        malformed("[Alias0]\nAlias=A\nPersistentToken=T\n", 293),
        malformed(record(0, "A", "T", "yes"), 293),
        malformed(record(0, "A", "T", "\"  \""), 293),
    };
    return table;
}

std::pair<std::int32_t, std::uint32_t> codeAndLine(const vykel::DeviceTable& table) {
    const vykel::StatusBlock block = transfer(table);
    return {block.code, block.line};
}

TEST(Transfer, LayoutsGiveTheirDevicesAndBytes) {
    TransferMachine legacy;
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.before);
        writeFile(legacy.iniFile, row.before);
        const auto written = fs::last_write_time(legacy.iniFile);
        std::list<LegacyDevice> devices;
        for (const DeviceRow& device : row.devices)
            devices.emplace_back(device.number, device.alias, device.token).refusal =
                device.token == std::string("refuses") ? row.code : 0;
        // A failure must be reported also when the refresh runs while the client unwinds.
        whileUnwinding([&] { EXPECT_EQ(codeAndLine(tableOf(devices)), std::make_pair(row.code, row.line)); });
        auto expected = row.devices.begin();
        for (const LegacyDevice& device : devices) {
            EXPECT_EQ(device.alias, expected->aliasAfter);
            EXPECT_EQ(device.calls, (expected++)->calls);
        }
        EXPECT_EQ(readFile(legacy.iniFile), row.after == "=" ? row.before : saved(row.after));
        EXPECT_TRUE(row.after != "=" || fs::last_write_time(legacy.iniFile) == written);
        EXPECT_FALSE(fs::exists(legacy.temporaryFile));
    }
}

TEST(Transfer, AFileThatCannotBeReadOrReplacedIsKept) {
    TransferMachine legacy;
    const std::string before = "[Aliases]\nA=KEL0\nB=KEL1\n";
    writeFile(legacy.iniFile, before);
    std::list<LegacyDevice> devices;
    devices.emplace_back(0, "");
    for (const DWORD sharing :
         {DWORD{0}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) { // it can be neither, it can be read
        const HANDLE held = CreateFileW(wide(legacy.iniFile.u8string()).c_str(), GENERIC_READ, sharing,
                                        nullptr, OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        EXPECT_EQ(codeAndLine(tableOf(devices)),
                  sharing == 0 ? std::make_pair(success, 0U) : std::make_pair(configurationFault, 95U));
        EXPECT_EQ(devices.front().alias, sharing == 0 ? "" : "A");
        CloseHandle(held);
        EXPECT_FALSE(fs::exists(legacy.temporaryFile));
        EXPECT_EQ(readFile(legacy.iniFile), before);
    }
}

} // namespace
