// Only in the host build: every call of the system and every allocation of an alias transfer fails, once or
// from then on. The file is the old or the new one, byte for byte, and the next run finishes.
#include "support/Faults.h"
#include "support/TransferMachine.h"
#include <algorithm>

namespace {

using namespace vykeltest;
using namespace winhost;

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

/// A machine with an alias for each of two devices.
struct Scenario : TransferMachine {
    explicit Scenario(std::string text) : before(std::move(text)) { reset(); }

    void reset() {
        devices.clear();
        table = {{&devices.emplace_back(0, "", "T0"), &devices.emplace_back(1, "", "T1")}};
        writeFile(iniFile, before);
    }

    const std::string before;
    std::list<LegacyDevice> devices;
    vykel::DeviceTable table;
};

/// Expects the old file or this new one, and that `expectedLine` is the highest line that reports exhausted
/// memory.
void expectNothingLost(const std::string& before, const std::string& after, std::uint32_t expectedLine) {
    Scenario legacy(before);
    const std::ptrdiff_t resources = openResources();
    vykel::StatusBlock block;
    std::uint32_t lastLine = 0;
    const auto run = [&] { return (block = transfer(legacy.table)).code; };
    withEachFault(20, 20, run, [&](const Fault& fault) {
        const std::int32_t code = block.code;
        const bool inMemory = fault.call == Call::malloc;
        const std::string text = readFile(legacy.iniFile);
        lastLine = std::max(lastLine, inMemory ? block.line : 0);
        EXPECT_TRUE(text == legacy.before || (text == after && code == success)) << code << text;
        // While all calls fail, the removal of the temporary file fails, too.
        EXPECT_TRUE((fault.effect == Effect::FailOnward && !inMemory) || !fs::exists(legacy.temporaryFile));
        EXPECT_EQ(openResources(), resources);
        EXPECT_EQ(run(), success);
        EXPECT_EQ(readFile(legacy.iniFile), after);
        const std::string calls = legacy.devices.front().calls + legacy.devices.back().calls;
        EXPECT_EQ(std::count(calls.begin(), calls.end(), 'S'), 2);
        EXPECT_EQ(legacy.devices.front().alias + legacy.devices.back().alias, "AB");
        legacy.reset();
    });
    EXPECT_EQ(lastLine, expectedLine);
    const ScopedFault flush({Call::FlushFileBuffers, 1});
    EXPECT_EQ(run(), success);
    EXPECT_EQ(flush.struck(), 1u); // the new file is flushed to the disk
}

TEST(TransferFault, NothingIsLostWhateverFails) {
    // The folder's search; the writing of a record.
    expectNothingLost("[Aliases]\nA=KEL0\nB=KEL1\n" + keep, saved("[Aliases]\n" + keep), 283);
    expectNothingLost(
        v15 + "[Alias0]\nAlias=A\nPersistentToken=T0\nLocal=True\n"
              "[Alias1]\nAlias=\"X \\\" Line0001\"\nPersistentToken=T9\nLocal=False\n"
              "[Alias2]\nAlias=B\nPersistentToken=T1\nLocal=True\n",
        saved(v15 + "[Alias0]\nAlias=\"X \\\" Line0001\"\nPersistentToken=\"T9\"\nLocal=False\n"), 343);
}

} // namespace
