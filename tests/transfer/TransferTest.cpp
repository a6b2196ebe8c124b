// The legacy alias file: which device gets what, which bytes are left, and in which order the devices are
// asked. The fuzz target aliases replays the layouts, the versions and what a record may lack.
#include "support/TransferMachine.h"
#include "support/Unwinding.h"
#include <gtest/gtest.h>

namespace {

using namespace vykeltest;

constexpr std::uint32_t none = vykel::noDeviceNumber;
const char* const longAlias =
    "an alias that is longer than the 80 bytes that a line may have where long values are split";
const std::string v15 = "[General]\nMajorVersion=15\nMinorVersion=0\n";

std::string record(int index, const std::string& alias, const std::string& token,
                   const char* local = "True") {
    return "[Alias" + std::to_string(index) + "]\nAlias=\"" + alias + "\"\nPersistentToken=\"" + token +
           "\"\nLocal=" + local + "\n";
}

std::pair<std::int32_t, std::uint32_t> codeAndLine(const vykel::DeviceTable& table) {
    const vykel::StatusBlock block = transfer(table);
    return {block.code, block.line};
}

TEST(Transfer, FilesGiveTheirDevicesAndBytes) {
    const struct {
        std::string before;
        std::list<LegacyDevice> devices;
        const char* outcome; ///< of each device its alias and its calls: n getNumber, a getAlias, t1 t2
                             ///< getPersistentToken, S setAlias
        std::string after;   ///< the saved file, before its line ends become CRLF; "=": not a byte changes
        std::int32_t code = success;
        std::uint32_t line = 0; ///< of the error
    } rows[] = {
        // Wide text is never read.
        {std::string("\xFF\xFE[\0A\0", 6), {{0, "", "T"}}, " ;", "="},
        // A free device receives, a named one keeps, one without number or alias takes no part. Comments and
        // bad lines are not kept.
        {"; c\n[Aliases]\nLab1=KEL0\nLab2=KEL3\nbad\nOld=KEL9\nA=KEL1\n",
         {{0, ""}, {3, "X"}, {none, ""}, {1, nullptr}},
         "Lab1 nanaS;X nana; n; na;",
         "[Aliases]\nOld=KEL9\nA=KEL1\n"},
        // A device that takes none any more when its turn comes costs the entry.
        {"[Aliases]\nA=KEL0\nB=KEL1\n", {{0, "", "fades"}}, " nana;", "[Aliases]\nB=KEL1\n"},
        // A refusal ends the run, the file stays.
        {"[Aliases]\nA=KEL0\nB=KEL1\n", {{0, ""}, {1, "", "refuses"}}, "A nanaS; nanaS;", "=", -77},
        // Nothing consumed: nothing written, though reading took the records out. A device without a token
        // finds nothing.
        {v15 + record(0, "A", "null"), {{0, "", "null"}, {1, "", "T"}}, " nat2; nat2;", "="},
        // Survivors are renumbered in their order at the end, encoded again, however long, without blanks at
        // their ends.
        {v15 + record(0, longAlias, "T9") + record(1, "a\\tb", "T1") + record(2, "  c\\x7f\\\\ ", " T8 ") +
             "[Tail]\nx=1\n",
         {{5, "", "t9"}, {0, "", "T1"}},
         " nat2;a\tb nat2aS;",
         v15 + "[Tail]\nx=1\n" + record(0, longAlias, "T9") + record(1, "c\\x7f\\\\", "T8")},
        // Of a malformed record no device is asked.
        {v15 + record(0, "A", "T", "yes"), {{0, "", "T"}}, " ;", "=", configurationFault, 293},
    };
    TransferMachine legacy;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before);
        writeFile(legacy.iniFile, row.before);
        const auto written = fs::last_write_time(legacy.iniFile);
        std::list<LegacyDevice> devices = row.devices;
        for (LegacyDevice& device : devices)
            device.refusal = device.token == "refuses" ? row.code : 0;
        // A failure must be reported also when the refresh runs while the client unwinds.
        whileUnwinding([&] { EXPECT_EQ(codeAndLine(tableOf(devices)), std::make_pair(row.code, row.line)); });
        std::string outcome;
        for (const LegacyDevice& device : devices)
            outcome += device.alias + ' ' + device.calls + ';';
        EXPECT_EQ(outcome, row.outcome);
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
    for (const bool isReadable : {false, true}) {
        const HANDLE held = CreateFileW(wide(legacy.iniFile.u8string()).c_str(), GENERIC_READ,
                                        isReadable ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0, nullptr,
                                        OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        EXPECT_EQ(codeAndLine(tableOf(devices)),
                  std::make_pair(isReadable ? configurationFault : success, isReadable ? 95U : 0U));
        EXPECT_EQ(devices.front().alias, isReadable ? "A" : "");
        CloseHandle(held);
        EXPECT_FALSE(fs::exists(legacy.temporaryFile));
        EXPECT_EQ(readFile(legacy.iniFile), before);
    }
}

} // namespace
