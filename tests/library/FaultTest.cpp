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

/// How often `run` makes each call of the system.
template <class Run>
std::map<std::string, std::size_t> callsOf(const Run& run) {
#define NAME(name, error) #name,
    static constexpr const char* names[] = {WINHOST_CALLS(NAME)};
#undef NAME
    std::list<ScopedFault> counters;
    for (std::size_t call = 0; call < std::size(names); ++call)
        counters.emplace_back(Fault{static_cast<Call>(call), std::numeric_limits<std::size_t>::max()});
    run();
    std::map<std::string, std::size_t> calls;
    for (const ScopedFault& counter : counters)
        calls[names[calls.size()]] = counter.counted();
    return calls;
}

// The figures of docs/performance.md: one call more costs every client something, and fails here.
TEST_F(FaultTest, ALifeMakesJustTheseCalls) {
    const std::map<std::string, std::size_t> once = {
        {"RegOpenKeyExW", 1}, {"RegQueryInfoKeyW", 1}, {"RegCloseKey", 1},  {"SHGetFolderPathW", 2},
        {"fopen", 3},         {"FindFirstFileA", 1},   {"fclose", 2},       {"_fileno", 2},
        {"LockFileEx", 2},    {"_get_osfhandle", 2},   {"CreateEventA", 2}, {"CloseHandle", 2}};
    const std::map<std::string, std::size_t> each = {
        {"LoadLibraryExW", 1},    {"FreeLibrary", 1}, {"GetProcAddress", 3},   {"RegOpenKeyExW", 2},
        {"RegEnumKeyExW", 1},     {"RegCloseKey", 2}, {"RegQueryValueExW", 1}, {"GetModuleHandleExW", 1},
        {"GetModuleFileNameW", 1}}; // the last two are of the test's plug-ins
    const auto life = [this] { EXPECT_EQ(run().code, success); };
    life();
    for (std::size_t n = 2; n < 4; ++n) {
        auto calls = callsOf(life);
        calls.erase("malloc");
        for (auto& [name, count] : calls) {
            const auto number = [&name = name](const auto& counts) {
                const auto found = counts.find(name);
                return found == counts.end() ? 0 : found->second;
            };
            EXPECT_EQ(count, number(once) + n * number(each)) << name << " with " << n << " plug-ins";
        }
        machine.install("fake_plugin", "c");
    }
    plugins.devicesOf["a"][0].alias = "";
    writeFile(machine.configurationFolder() / "vykel.ini", "[Aliases]\nPump=KEL0\n");
    const auto moving = callsOf(life);
    for (const char* const name : {"FlushFileBuffers", "MoveFileExA"})
        EXPECT_EQ(moving.at(name), 1u) << name;
    EXPECT_EQ(moving.at("LockFileEx"), 2u);
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
