// The host build alone: every call of the system and every allocation of an alias transfer made to fail, once
// and from then on. The file is the old or the new one, byte for byte, and the next run finishes.
#include "errors/CatchLadder.h"
#include "support/AllocationFault.h"
#include "support/TransferMachine.h"
#include "TraditionalAliasTransferManager.h"
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

const Layout layouts[] = {
    {"by resource name", "[Aliases]\nA=KEL0\nB=KEL1\nOld=KEL9\n[Keep]\nme=1\n",
     "[Aliases]\r\nOld=KEL9\r\n\r\n[Keep]\r\nme=1\r\n\r\n"},
    {"by token",
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

    std::int32_t transfer() const {
        vykel::StatusBlock block;
        vyerr::initStatusBlock(&block);
        vyerr::runGuarded(&block, {"", 0},
                          [&] { vykel::TraditionalAliasTransferManager().transferAliases(table); });
        return block.code;
    }

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
        std::int32_t code = 0;
        const bool struck = run(code);
        const std::string text = readFile(legacy.iniFile);
        EXPECT_TRUE(code == 0 || code == -50209 || code == -52000 || code == -52006 || code == -52008)
            << code;
        EXPECT_TRUE(text == GetParam().after || text == GetParam().before) << text;
        EXPECT_TRUE(code == 0 || text == GetParam().before); // what follows the replace cannot fail the run
        EXPECT_EQ(transfer(), 0);
        EXPECT_EQ(readFile(legacy.iniFile), GetParam().after);
        EXPECT_EQ(timesGiven(), 2u);
        EXPECT_EQ(devices[0]->alias + devices[1]->alias, "AB");
        return struck && !HasFailure();
    }

    TransferMachine legacy;
    std::vector<std::unique_ptr<LegacyDevice>> devices;
    vykel::DeviceTable table;
};

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
                         [](const auto& layout) { return layout.index == 0 ? "ResourceName" : "Token"; });

} // namespace
