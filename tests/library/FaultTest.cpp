// The host build only: every call of the system, and every allocation, of a client's whole life fails once,
// or from then on.
#include "support/AllocationFault.h"
#include "support/Codes.h"
#include "support/FakePlugins.h"
#include "support/LoadedLibrary.h"
#include "support/Machine.h"
#include "vykel/vykeldevenum.h"
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <vector>
#include <winhost/faults.h>

namespace vykeltest {

namespace {

using winhost::Call;
using winhost::Effect;
using winhost::Fault;
using winhost::ScopedFault;

struct Outcome {
    std::int32_t initialized = success;
    std::int32_t listed = success;
    vykel::StatusBlock refreshed = vykel::makeStatusBlock();
    std::int32_t finalized = success;
    std::uint32_t count = 0;
    std::size_t failedAllocations = 0;
};

class FaultTest : public testing::Test {
protected:
    FaultTest() {
        plugins.logging = false;
        machine.install("fake_plugin", "a");
        machine.install("fake_plugin", "b");
    }

    /// A client's whole life.
    Outcome run(const AllocationFault& fault = {}) {
        plugins.devicesOf["a"].assign(3, {});
        plugins.devicesOf["b"].assign(1, {});
        armAllocationFault(fault);
        Outcome outcome;
        outcome.initialized = vykeldevenum_initialize();
        if (outcome.initialized == success) {
            vykel::IDeviceList* list = nullptr;
            outcome.listed = vykeldevenum_getAllKelDevices(0, &list);
            if (outcome.listed == success) {
                list->refresh(&outcome.refreshed);
                outcome.count = list->getCount();
                list->release();
            }
            outcome.finalized = vykeldevenum_finalize();
        }
        outcome.failedAllocations = armAllocationFault({}).struck;
        return outcome;
    }

    void expectSuccess() {
        const Outcome outcome = run();
        EXPECT_EQ(outcome.refreshed.code, success);
        EXPECT_EQ(outcome.count, 4u);
    }

    /// Runs with the first, the second, ... fault until one does not strike any more.
    void runWithEach(std::size_t minimum,
                     const std::function<bool(std::size_t nth, Outcome& outcome)>& runOne) {
        expectSuccess();
        const std::set<std::int32_t> documented = {success, configurationFault, memoryFull, resourceNotFound,
                                                   osFault};
        const std::ptrdiff_t resources = winhost::openResources();
        std::size_t nth = 0;
        for (bool struck = true; struck;) {
            SCOPED_TRACE(++nth);
            Outcome outcome;
            struck = runOne(nth, outcome);
            for (const std::int32_t code : {outcome.initialized, outcome.listed, outcome.refreshed.code})
                EXPECT_EQ(documented.count(code), 1u) << code;
            EXPECT_EQ(outcome.finalized, success);
            EXPECT_EQ(winhost::openResources(), resources);
            expectSuccess();
        }
        EXPECT_GT(nth, minimum);
    }

    Machine machine;
    FakePlugins plugins;
};

} // namespace

TEST_F(FaultTest, EveryCallOfTheSystemMayFail) {
    for (const Effect effect : {Effect::Fail, Effect::FailOnward})
        runWithEach(40, [&](std::size_t nth, Outcome& outcome) {
            const ScopedFault fault({Call::Any, nth, effect, 0});
            outcome = run();
            return fault.struck() != 0;
        });
}

TEST_F(FaultTest, EveryAllocationMayFail) {
    for (const bool onward : {false, true})
        runWithEach(20, [&](std::size_t nth, Outcome& outcome) {
            outcome = run({nth, onward, 0});
            return outcome.failedAllocations != 0;
        });
}

TEST_F(FaultTest, ReportsWhatFailed) {
    const char* const lockFile = "includes/vyfile/internal/FileLockImpl.cpp";
    const Fault pending{Call::LockFileEx, 1, Effect::Fail, ERROR_IO_PENDING};
    const struct {
        std::vector<Fault> faults;
        std::int32_t code; // of the refresh, if it comes that far
        std::uint32_t count;
        const char* file;
        std::uint32_t line;
    } cases[] = {
        {{{Call::CreateEventA, 1}}, osFault, 4, lockFile, 41},
        {{{Call::LockFileEx, 1, Effect::Fail, 33}}, osFault, 4, lockFile, 72},
        {{{Call::LockFileEx, 1}, {Call::FormatMessageA, 1}}, osFault, 4, lockFile, 72},
        {{{Call::_get_osfhandle, 1}}, osFault, 4, lockFile, 72},
        {{pending}, success, 4, "", 0},
        {{pending, {Call::GetOverlappedResult, 1}}, osFault, 4, lockFile, 67},
        {{{Call::fopen, 1}}, success, 4, "", 0}, // opened at the second try
        {{{Call::fopen, 1, Effect::FailOnward}},
         configurationFault,
         4,
         "includes/pellumkelddk/user/FileLock.cpp",
         47},
        {{{Call::SHGetFolderPathW, 2}}, resourceNotFound, 4, "includes/vysys/stdpath.cpp", 283},
        {{{Call::RegCloseKey, 1, Effect::FailOnward}}, success, 4, "", 0},
        {{{Call::RegOpenKeyExW, 1}}, resourceNotFound, 0, "", 0},
        {{{Call::RegQueryInfoKeyW, 1}}, resourceNotFound, 0, "", 0},
        {{{Call::RegEnumKeyExW, 1}}, success, 1, "", 0},
        {{{Call::RegQueryValueExW, 2}}, success, 3, "", 0},
        {{{Call::LoadLibraryExW, 1}}, success, 1, "", 0},
        {{{Call::GetProcAddress, 6}}, success, 3, "", 0},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        std::vector<std::unique_ptr<ScopedFault>> armed;
        for (const Fault& fault : each.faults)
            armed.push_back(std::make_unique<ScopedFault>(fault));
        const Outcome outcome = run();
        for (const auto& fault : armed)
            EXPECT_NE(fault->struck(), 0u);
        EXPECT_EQ(outcome.initialized != success ? outcome.initialized : outcome.refreshed.code, each.code);
        EXPECT_STREQ(outcome.refreshed.file, each.file);
        EXPECT_EQ(outcome.refreshed.line, each.line);
        EXPECT_EQ(outcome.count, each.count);
    }
}

TEST_F(FaultTest, RetriesALockThatCannotBeSetUp) {
    plugins.logging = true;
    const LoadedLibrary library; // one of its own, whose lock was never set up
    {
        const ScopedFault fault({Call::InitializeCriticalSection, 1, Effect::Fail, 0});
        EXPECT_EQ(library.initialize(), memoryFull);
        EXPECT_EQ(library.getAllKelDevices(1, nullptr), generalFault); // as if never called
        EXPECT_EQ(fault.struck(), 1u);
    }
    EXPECT_EQ(plugins.takeLog(), ""); // it does not go on without a lock
    EXPECT_EQ(library.initialize(), success);
    EXPECT_EQ(library.finalize(), success);
}

} // namespace vykeltest
