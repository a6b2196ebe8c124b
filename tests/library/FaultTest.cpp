// Only in the host build: every call of the system, and every allocation, of a client's whole life fails
// once, or from then on.
#include "support/Faults.h"
#include "support/LibraryTest.h"
#include "support/TestFiles.h"
#include "vykel/vykeldevenum.h"
#include <limits>
#include <list>
#include <map>
#include <set>

namespace vykeltest {

using namespace winhost;

struct Outcome {
    std::int32_t code = success; ///< of the first call that failed
    vykel::StatusBlock refreshed = vykel::makeStatusBlock();
    std::uint32_t count = 0;
};

class FaultTest : public LibraryTest {
protected:
    FaultTest() {
        plugins.logging = false;
        for (const char* const name : {"a", "b"})
            machine.install("fake_plugin", name);
        expectSuccess();
    }

    /// A client's whole life, with the library that is linked into this program.
    Outcome run() {
        Outcome outcome;
        outcome.code = vykeldevenum_initialize();
        if (outcome.code != success)
            return outcome;
        vykel::IDeviceList* list = nullptr;
        outcome.code = vykeldevenum_getAllKelDevices(0, &list);
        if (outcome.code == success) {
            list->refresh(&outcome.refreshed);
            outcome.code = outcome.refreshed.code;
            outcome.count = list->getCount();
            list->release();
        }
        EXPECT_EQ(vykeldevenum_finalize(), success);
        return outcome;
    }

    void unnumberDevices() {
        plugins.devicesOf["a"].assign(3, {});
        plugins.devicesOf["b"].assign(1, {});
    }

    void expectSuccess() {
        unnumberDevices();
        const Outcome outcome = run();
        EXPECT_EQ(outcome.code, success);
        EXPECT_EQ(outcome.count, 4u);
        unnumberDevices();
    }
};

TEST_F(FaultTest, EveryCallAndAllocationMayFail) {
    const std::set<std::int32_t> documented = {success, configurationFault, memoryFull, resourceNotFound,
                                               osFault};
    const std::ptrdiff_t resources = openResources();
    Outcome outcome;
    const auto life = [&] { return (outcome = run()).code; };
    withEachFault(40, 20, life, [&](const Fault&) {
        EXPECT_EQ(documented.count(outcome.code), 1u) << outcome.code;
        EXPECT_EQ(openResources(), resources);
        expectSuccess();
    });
}

TEST_F(FaultTest, ALifeMakesTheCallsOfThePageAndNoMore) {
    const char* const names[] = {
#define NAME(name, error) #name,
        WINHOST_CALLS(NAME)
#undef NAME
    };
    struct Budget {
        std::size_t life = 0, plugin = 0, moved = 0;
    };
    std::map<std::string, Budget> budgets;
    std::ifstream page(PERFORMANCE_PAGE);
    for (std::string line; std::getline(page, line);) {
        char name[64];
        Budget row;
        if (std::sscanf(line.c_str(), "| `%63[^`]` | %zu | %zu | %zu |", name, &row.life, &row.plugin,
                        &row.moved) == 4)
            budgets[name] = row;
    }
    budgets["GetModuleHandleExW"].plugin = budgets["GetModuleFileNameW"].plugin = 1; // the fakes' own calls
    constexpr std::size_t never = std::numeric_limits<std::size_t>::max();
    for (std::size_t n = 2; n <= 3; ++n, machine.install("fake_plugin", "c"))
        for (const bool moved : {false, true}) {
            plugins.devicesOf["a"] = {{moved ? 0U : 5, 0, 0, ""}};
            writeFile(machine.configurationFolder() / "vykel.ini", "[Aliases]\nA=KEL0\nB=KEL9\n");
            std::list<ScopedFault> counters;
            for (std::size_t kind = 0; kind < static_cast<std::size_t>(Call::malloc); ++kind)
                counters.emplace_back(Fault{static_cast<Call>(kind), never});
            EXPECT_EQ(run().code, success);
            std::size_t call = 0;
            for (const ScopedFault& counter : counters) {
                const char* const name = names[call++];
                const Budget budget = budgets[name];
                EXPECT_EQ(counter.counted(), budget.life + n * budget.plugin + (moved ? budget.moved : 0))
                    << name << ", " << n << " plug-ins, moved: " << moved;
            }
        }
}

TEST_F(FaultTest, ReportsWhatFailed) {
    const char* const lock = "includes/vyfile/internal/FileLockImpl.cpp";
    const char* const lockFile = "includes/pellumkelddk/user/FileLock.cpp";
    const char* const folder = "includes/vysys/stdpath.cpp";
    const Fault pending{Call::LockFileEx, 1, Effect::Fail, ERROR_IO_PENDING};
    const struct {
        std::vector<Fault> faults;
        std::int32_t code;
        std::uint32_t count;
        const char* file = "";
        std::uint32_t line = 0;
    } cases[] = {
        {{{Call::CreateEventA, 1}}, osFault, 4, lock, 41},
        {{{Call::LockFileEx, 1, Effect::Fail, 33}}, osFault, 4, lock, 72},
        {{{Call::LockFileEx, 1}, {Call::FormatMessageA, 1}}, osFault, 4, lock, 72},
        {{{Call::_get_osfhandle, 1}}, osFault, 4, lock, 72},
        {{pending}, success, 4},
        {{pending, {Call::GetOverlappedResult, 1}}, osFault, 4, lock, 67},
        {{{Call::fopen, 1}}, success, 4}, // opened at the second try
        {{{Call::fopen, 1, Effect::FailOnward}}, configurationFault, 4, lockFile, 47},
        {{{Call::SHGetFolderPathW, 2}}, resourceNotFound, 4, folder, 283},
        {{{Call::RegCloseKey, 1, Effect::FailOnward}}, success, 4},
        {{{Call::RegOpenKeyExW, 1}}, resourceNotFound, 0},
        {{{Call::RegQueryInfoKeyW, 1}}, resourceNotFound, 0},
        {{{Call::RegEnumKeyExW, 1}}, success, 1},
        {{{Call::RegQueryValueExW, 2}}, success, 3},
        {{{Call::RegQueryValueExW, 1, Effect::FailOnward, ERROR_MORE_DATA}}, success, 0}, // it ends
        {{{Call::LoadLibraryExW, 1}}, success, 1},
        {{{Call::GetProcAddress, 6}}, success, 3},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        std::list<ScopedFault> armed(each.faults.begin(), each.faults.end());
        const Outcome outcome = run();
        for (const ScopedFault& fault : armed)
            EXPECT_NE(fault.struck(), 0u);
        EXPECT_EQ(outcome.code, each.code);
        EXPECT_STREQ(outcome.refreshed.file, each.file);
        EXPECT_EQ(outcome.refreshed.line, each.line);
        EXPECT_EQ(outcome.count, each.count);
        unnumberDevices();
    }
}

TEST_F(FaultTest, RetriesALockThatCannotBeSetUp) {
    plugins.logging = true;
    {
        const ScopedFault fault({Call::InitializeCriticalSection, 1});
        EXPECT_EQ(library.initialize(), memoryFull);
        EXPECT_EQ(library.getAllKelDevices(1, nullptr), generalFault); // as if never called
        EXPECT_EQ(fault.struck(), 1u);
    }
    EXPECT_EQ(plugins.takeLog(), ""); // it does not go on without a lock
    EXPECT_EQ(library.initialize(), success);
}

} // namespace vykeltest
