// The host build alone: every call of the system, and every allocation, of a client's whole life made to
// fail.
#include "support/AllocationFault.h"
#include "support/FakePlugins.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "vykel/vykeldevenum.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <vector>
#include <winhost/faults.h>

namespace vykeltest {

namespace {

using winhost::Call;
using winhost::Effect;
using winhost::Fault;
using winhost::ScopedFault;

struct Outcome {
    std::int32_t initialized = 0;
    std::int32_t listed = 0;
    vykel::StatusBlock refreshed = vykel::makeStatusBlock();
    std::int32_t finalized = 0;
    std::uint32_t count = 0;

    bool isDocumented() const {
        const auto among = [](std::int32_t code, std::initializer_list<std::int32_t> codes) {
            return std::find(codes.begin(), codes.end(), code) != codes.end();
        };
        return among(initialized, {0, -52000, -52006}) && among(listed, {0, -52000, -52006}) &&
               among(refreshed.code, {0, -50209, -52000, -52006, -52008}) && finalized == 0;
    }
    bool isSuccess() const { return initialized == 0 && listed == 0 && refreshed.code == 0 && count == 4; }
};

class FaultTest : public testing::Test {
protected:
    FaultTest() {
        plugins.logging = false;
        machine.install("fake_plugin", "a");
        machine.install("fake_plugin", "b");
    }

    /// A client's whole life.
    Outcome run() {
        plugins.devicesOf["a"].assign(3, {});
        plugins.devicesOf["b"].assign(1, {});
        armAllocationFault(armedAllocation);
        Outcome outcome;
        outcome.initialized = vykeldevenum_initialize();
        if (outcome.initialized == 0) {
            vykel::IDeviceList* list = nullptr;
            outcome.listed = vykeldevenum_getAllKelDevices(0, &list);
            if (outcome.listed == 0) {
                list->refresh(&outcome.refreshed);
                outcome.count = list->getCount();
                list->release();
            }
            outcome.finalized = vykeldevenum_finalize();
        }
        struck = armAllocationFault({}).struck;
        return outcome;
    }

    Machine machine;
    FakePlugins plugins;
    AllocationFault armedAllocation;
    std::size_t struck = 0;
};

} // namespace

TEST_F(FaultTest, EveryCallOfTheSystemMayFail) {
    ASSERT_TRUE(run().isSuccess());
    const std::ptrdiff_t resources = winhost::openResources();
    for (const Effect effect : {Effect::Fail, Effect::FailOnward}) {
        std::size_t nth = 0;
        for (bool struckOnce = true; struckOnce;) {
            SCOPED_TRACE(++nth);
            {
                const ScopedFault fault({Call::Any, nth, effect, 0});
                const Outcome outcome = run();
                struckOnce = fault.struck() != 0;
                EXPECT_TRUE(outcome.isDocumented()) << outcome.initialized << ' ' << outcome.listed << ' '
                                                    << outcome.refreshed.code << ' ' << outcome.finalized;
            }
            EXPECT_EQ(winhost::openResources(), resources);
            EXPECT_TRUE(run().isSuccess());
        }
        EXPECT_GT(nth, 40u);
    }
}

TEST_F(FaultTest, EveryAllocationMayFail) {
    ASSERT_TRUE(run().isSuccess());
    const std::ptrdiff_t resources = winhost::openResources();
    for (const bool onward : {false, true}) {
        std::size_t nth = 0;
        do {
            SCOPED_TRACE(++nth);
            armedAllocation = {nth, onward, 0};
            const Outcome outcome = run();
            EXPECT_TRUE(outcome.isDocumented())
                << outcome.initialized << ' ' << outcome.listed << ' ' << outcome.refreshed.code;
            const std::size_t hit = struck;
            armedAllocation = {};
            EXPECT_EQ(winhost::openResources(), resources);
            EXPECT_TRUE(run().isSuccess());
            struck = hit;
        } while (struck != 0);
        EXPECT_GT(nth, 20u);
    }
}

TEST_F(FaultTest, TellsWhatFailed) {
    const struct {
        std::vector<Fault> faults;
        std::int32_t code;
        const char* file;
        std::uint32_t line;
    } cases[] = {
        {{{Call::CreateEventA, 1}}, -52008, "includes/vyfile/internal/FileLockImpl.cpp", 41},
        {{{Call::LockFileEx, 1, Effect::Fail, 33}}, -52008, "includes/vyfile/internal/FileLockImpl.cpp", 72},
        {{{Call::LockFileEx, 1}, {Call::FormatMessageA, 1}},
         -52008,
         "includes/vyfile/internal/FileLockImpl.cpp",
         72},
        {{{Call::_get_osfhandle, 1}}, -52008, "includes/vyfile/internal/FileLockImpl.cpp", 72},
        {{{Call::LockFileEx, 1, Effect::Fail, ERROR_IO_PENDING}}, 0, "", 0},
        {{{Call::LockFileEx, 1, Effect::Fail, ERROR_IO_PENDING}, {Call::GetOverlappedResult, 1}},
         -52008,
         "includes/vyfile/internal/FileLockImpl.cpp",
         67},
        {{{Call::fopen, 1}}, 0, "", 0}, // opened at the second try
        {{{Call::fopen, 1, Effect::FailOnward}}, -50209, "includes/pellumkelddk/user/FileLock.cpp", 47},
        {{{Call::SHGetFolderPathW, 2}}, -52006, "includes/vysys/stdpath.cpp", 283},
        {{{Call::RegCloseKey, 1, Effect::FailOnward}}, 0, "", 0},
    };
    for (const auto& each : cases) {
        std::vector<std::unique_ptr<ScopedFault>> armed;
        for (const Fault& fault : each.faults)
            armed.push_back(std::make_unique<ScopedFault>(fault));
        const Outcome outcome = run();
        for (const auto& fault : armed)
            EXPECT_NE(fault->struck(), 0u) << each.line;
        EXPECT_EQ(outcome.refreshed.code, each.code);
        EXPECT_STREQ(outcome.refreshed.file, each.file);
        EXPECT_EQ(outcome.refreshed.line, each.line);
        EXPECT_EQ(outcome.count, 4u); // whatever the numbering met
    }
    const struct {
        Call call;
        std::size_t nth;
        std::int32_t code;
        std::uint32_t count;
    } loading[] = {{Call::RegOpenKeyExW, 1, -52006, 0}, {Call::RegQueryInfoKeyW, 1, -52006, 0},
                   {Call::RegEnumKeyExW, 1, 0, 1},      {Call::RegQueryValueExW, 2, 0, 3},
                   {Call::LoadLibraryExW, 1, 0, 1},     {Call::GetProcAddress, 6, 0, 3}};
    for (const auto& each : loading) {
        const ScopedFault fault({each.call, each.nth, Effect::Fail, 0});
        const Outcome outcome = run();
        EXPECT_EQ(outcome.initialized, each.code);
        EXPECT_EQ(outcome.count, each.count);
    }
}

TEST_F(FaultTest, RetriesALockThatCannotBeSetUp) {
    const LoadedLibrary library; // one of its own, whose lock was never set up
    {
        const ScopedFault fault({Call::InitializeCriticalSection, 1, Effect::Fail, 0});
        EXPECT_EQ(library.initialize(), -52000);
        EXPECT_EQ(library.getAllKelDevices(1, nullptr), -52003); // as if never called
        EXPECT_EQ(fault.struck(), 1u);
    }
    EXPECT_EQ(library.initialize(), 0);
    EXPECT_EQ(library.finalize(), 0);
}

} // namespace vykeltest
