// The host build only: every call of the system and every allocation of an alias transfer fails, once or from
// then on. The file is the old or the new one, byte for byte, and the next run finishes.
#include "support/AllocationFault.h"
#include "support/TransferMachine.h"
#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <winhost/faults.h>

namespace {

using namespace vykeltest;
using winhost::Effect;

struct Layout {
    const char* name;
    std::string before;
    std::string after;
};

/// Gives the tests their names.
void PrintTo(const Layout& layout, std::ostream* out) {
    *out << layout.name;
}

const Layout layouts[] = {
    {"ResourceName", "[Aliases]\nA=KEL0\nB=KEL1\nOld=KEL9\n[Keep]\nme=1\n",
     "[Aliases]\r\nOld=KEL9\r\n\r\n[Keep]\r\nme=1\r\n\r\n"},
    {"Token",
     "[General]\nMajorVersion=15\nMinorVersion=0\n[Alias0]\nAlias=A\nPersistentToken=T0\nLocal=True\n"
     "[Alias1]\nAlias=\"X \\\" Line0001\"\nPersistentToken=T9\nLocal=False\n"
     "[Alias2]\nAlias=B\nPersistentToken=T1\nLocal=True\n",
     "[General]\r\nMajorVersion=15\r\nMinorVersion=0\r\n\r\n[Alias0]\r\nAlias=\"X \\\" Line0001\"\r\n"
     "PersistentToken=\"T9\"\r\nLocal=False\r\n\r\n"},
};

class TransferFault : public testing::TestWithParam<Layout> {
protected:
    TransferFault() {
        devices.push_back(std::make_unique<LegacyDevice>(0, "", "T0"));
        devices.push_back(std::make_unique<LegacyDevice>(1, "", "T1"));
        table = tableOf(devices);
    }

    std::int32_t transfer() const { return vykeltest::transfer(table).code; }

    std::size_t timesGiven() const {
        std::size_t count = 0;
        for (const auto& device : devices)
            count += static_cast<std::size_t>(std::count(device->calls.begin(), device->calls.end(), 'S'));
        return count;
    }

    void reset() {
        writeFile(legacy.iniFile, GetParam().before);
        for (const auto& device : devices) {
            device->alias.clear();
            device->calls.clear();
        }
    }

    /// One run under a fault (`run` tells whether it struck), then one without.
    bool survives(const std::function<bool(std::int32_t& code)>& run) {
        reset();
        std::int32_t code = success;
        const bool struck = run(code);
        const std::string text = readFile(legacy.iniFile);
        EXPECT_TRUE(code == success || code == configurationFault || code == memoryFull ||
                    code == resourceNotFound || code == osFault)
            << code;
        EXPECT_TRUE(text == GetParam().after || text == GetParam().before) << text;
        EXPECT_TRUE(code == success || text == GetParam().before); // nothing after the replace can fail
        EXPECT_EQ(transfer(), success);
        EXPECT_EQ(readFile(legacy.iniFile), GetParam().after);
        EXPECT_EQ(timesGiven(), 2u);
        EXPECT_EQ(devices[0]->alias + devices[1]->alias, "AB");
        return struck && !HasFailure();
    }

    TransferMachine legacy;
    std::vector<std::unique_ptr<LegacyDevice>> devices;
    vykel::DeviceTable table;
};

TEST_P(TransferFault, AReadErrorKeepsTheFileAndTheNewOneIsFlushedToDisk) {
    reset();
    std::string text = GetParam().before; // several blocks long, so that what was read could be saved
    for (int i = 0; i < 20000; ++i)
        text += "; a line to fill blocks\n";
    writeFile(legacy.iniFile, text);
    {
        const winhost::ScopedFault fault({winhost::Call::fread, 3, Effect::Fail, 0});
        EXPECT_EQ(transfer(), success);
        EXPECT_EQ(fault.struck(), 1u);
    }
    EXPECT_EQ(timesGiven(), 0u);
    EXPECT_EQ(readFile(legacy.iniFile), text);
    const winhost::ScopedFault fault({winhost::Call::FlushFileBuffers, 1, Effect::Fail, 0});
    EXPECT_EQ(transfer(), success);
    EXPECT_EQ(fault.struck(), 1u);
}

TEST_P(TransferFault, EveryCallOfTheSystem) {
    const std::ptrdiff_t resources = winhost::openResources();
    for (const Effect effect : {Effect::Fail, Effect::FailOnward}) {
        std::size_t nth = 1;
        while (survives([&](std::int32_t& code) {
            const winhost::ScopedFault fault({winhost::Call::Any, nth, effect, 0});
            code = transfer();
            // From then on everything fails, the removal of the temporary file included.
            EXPECT_TRUE(effect == Effect::FailOnward || !fs::exists(legacy.temporaryFile)) << nth;
            EXPECT_EQ(winhost::openResources(), resources);
            return fault.struck() != 0;
        }))
            ++nth;
        EXPECT_GT(nth, 20u);
    }
}

TEST_P(TransferFault, EveryAllocation) {
    for (const bool onward : {false, true}) {
        std::size_t nth = 1;
        while (survives([&](std::int32_t& code) {
            armAllocationFault({nth, onward, 0});
            code = transfer();
            const bool struck = armAllocationFault({}).struck != 0;
            EXPECT_FALSE(fs::exists(legacy.temporaryFile)) << nth;
            return struck;
        }))
            ++nth;
        EXPECT_GT(nth, 20u);
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, TransferFault, testing::ValuesIn(layouts),
                         testing::PrintToStringParamName());

} // namespace
