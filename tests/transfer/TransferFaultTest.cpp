// Only in the host build: every call of the system and every allocation of an alias transfer fails, once or
// from then on. The file is the old or the new one, byte for byte, and the next run finishes.
#include "support/Faults.h"
#include "support/TransferMachine.h"
#include <algorithm>

namespace {

using namespace vykeltest;
using winhost::Call;
using winhost::ScopedFault;

class TransferFault : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    TransferFault() { reset(); }

    void reset() {
        devices.clear();
        table = {{&devices.emplace_back(0, "", "T0"), &devices.emplace_back(1, "", "T1")}};
        writeFile(legacy.iniFile, before);
    }

    std::int32_t transfer() {
        const vykel::StatusBlock block = vykeltest::transfer(table);
        line = block.line;
        return block.code;
    }

    std::ptrdiff_t timesGiven() const {
        const std::string calls = devices.front().calls + devices.back().calls;
        return std::count(calls.begin(), calls.end(), 'S');
    }

    TransferMachine legacy;
    std::uint32_t line = 0; ///< of the last transfer's error
    std::list<LegacyDevice> devices;
    vykel::DeviceTable table;
    const std::string before = GetParam().first;
    const std::string after = saved(GetParam().second);
};

TEST_P(TransferFault, AReadErrorKeepsTheFileAndTheNewOneIsFlushedToDisk) {
    std::string text = before; // several blocks long, so that what was read could be saved
    for (int i = 0; i < 20000; ++i)
        text += "; a line to fill blocks\n";
    writeFile(legacy.iniFile, text);
    {
        const ScopedFault fault({Call::fread, 3});
        EXPECT_EQ(transfer(), success);
        EXPECT_EQ(fault.struck(), 1u);
    }
    EXPECT_EQ(timesGiven(), 0);
    EXPECT_EQ(readFile(legacy.iniFile), text);
    const ScopedFault fault({Call::FlushFileBuffers, 1});
    EXPECT_EQ(transfer(), success);
    EXPECT_EQ(fault.struck(), 1u);
}

TEST_P(TransferFault, NothingIsLostWhateverFails) {
    const std::ptrdiff_t resources = winhost::openResources();
    std::int32_t code = success;
    std::uint32_t lastLine = 0; // that memory can end in
    const auto run = [&] { return code = transfer(); };
    withEachFault(20, 20, run, [&](const winhost::Fault& fault) {
        const bool inMemory = fault.call == Call::malloc;
        const std::string text = readFile(legacy.iniFile);
        lastLine = std::max(lastLine, inMemory ? line : 0);
        EXPECT_TRUE(code == success || code == configurationFault || code == memoryFull ||
                    code == resourceNotFound || code == osFault)
            << code;
        EXPECT_TRUE(text == before || (text == after && code == success)) << code << text;
        // While all calls fail, the removal of the temporary file fails, too.
        EXPECT_TRUE((fault.effect == winhost::Effect::FailOnward && !inMemory) ||
                    !fs::exists(legacy.temporaryFile));
        EXPECT_EQ(winhost::openResources(), resources);
        EXPECT_EQ(transfer(), success);
        EXPECT_EQ(readFile(legacy.iniFile), after);
        EXPECT_EQ(timesGiven(), 2);
        EXPECT_EQ(devices.front().alias + devices.back().alias, "AB");
        reset();
    });
    EXPECT_EQ(lastLine,
              before[1] == 'A' ? 283u : 343u); // by token: writing a record, after the folder's search
}

/// Sections or keys enough for an index.
std::string many(const std::string& begin, const std::string& end) {
    std::string text;
    for (int i = 0; i < 20; ++i)
        text += begin + std::to_string(i) + end;
    return text;
}

const std::string keep = many("Old", "=KEL9\n") + many("[Keep", "]\nme=1\n");
const std::string v15 =
    "[General]\nMajorVersion=15\nMinorVersion=0\n" + many("k", "=1\n") + many("[Keep", "]\nme=1\n");

INSTANTIATE_TEST_SUITE_P(
    Layouts, TransferFault,
    testing::Values(std::pair("[Aliases]\nA=KEL0\nB=KEL1\n" + keep, "[Aliases]\n" + keep),
                    std::pair(v15 + "[Alias0]\nAlias=A\nPersistentToken=T0\nLocal=True\n"
                                    "[Alias1]\nAlias=\"X \\\" Line0001\"\nPersistentToken=T9\nLocal=False\n"
                                    "[Alias2]\nAlias=B\nPersistentToken=T1\nLocal=True\n",
                              v15 + "[Alias0]\nAlias=\"X \\\" Line0001\"\nPersistentToken=\"T9\"\n"
                                    "Local=False\n")),
    [](const auto& layout) { return layout.index == 0 ? "ResourceName" : "Token"; });

} // namespace
