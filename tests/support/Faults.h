#ifndef TESTS_FAULTS_H
#define TESTS_FAULTS_H

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>
#include <winhost/faults.h>

/// Only in the host build, in a program that links winhost_memory.
namespace vykeltest {

/// The errors of the system that calls fail with: 0, the natural one of each; scripts/prove asks for others.
inline std::vector<DWORD> faultErrors() {
    if (std::getenv("VYKEL_PROOF") == nullptr)
        return {0};
    return {ERROR_FILE_NOT_FOUND,      ERROR_PATH_NOT_FOUND,    ERROR_TOO_MANY_OPEN_FILES,
            ERROR_ACCESS_DENIED,       ERROR_NOT_ENOUGH_MEMORY, ERROR_SHARING_VIOLATION,
            ERROR_LOCK_VIOLATION,      ERROR_DISK_FULL,         ERROR_INVALID_PARAMETER,
            ERROR_INSUFFICIENT_BUFFER, ERROR_MORE_DATA,         ERROR_IO_DEVICE,
            ERROR_NO_MORE_ITEMS,       ERROR_IO_PENDING};
}

/// Calls `run` while the first, the second, ... call of the system fails, until it makes no more calls, and
/// again while all from there on fail, or all of one kind; then likewise with allocations. After each run
/// calls `check(fault)`, which makes everything ready for the next run. Expects at least so many calls and
/// allocations, and that `run` returns 0 when nothing has failed.
template <class Run, class Check>
void withEachFault(std::size_t minCalls, std::size_t minAllocations, Run run, Check check) {
    using winhost::Call;
    using winhost::Effect;
    std::size_t points[2] = {};
    const auto strike = [&](const winhost::Fault& fault) {
        SCOPED_TRACE(testing::Message()
                     << "kind " << static_cast<int>(fault.call) << ", call " << fault.nth
                     << (fault.effect == Effect::Fail ? "" : " and on") << ", error " << fault.error);
        bool struck = false;
        {
            const winhost::ScopedFault armed(fault);
            const std::int32_t code = run();
            struck = armed.struck() != 0;
            EXPECT_TRUE(struck || code == 0) << code;
        }
        points[fault.call == Call::malloc] += struck;
        check(fault);
        return struck && !testing::Test::HasFailure();
    };
    const auto walk = [&](winhost::Fault fault, std::size_t least) {
        for (const Effect effect : {Effect::Fail, Effect::FailOnward}) {
            fault.effect = effect;
            for (fault.nth = 1; strike(fault);)
                ++fault.nth;
            EXPECT_GT(fault.nth, least);
        }
    };
    for (const DWORD error : faultErrors()) {
        walk({Call::Any, 1, Effect::Fail, error}, minCalls);
        for (int kind = 0; error != 0 && kind < static_cast<int>(Call::Any); ++kind)
            if (static_cast<Call>(kind) != Call::malloc)
                strike({static_cast<Call>(kind), 1, Effect::FailOnward, error});
    }
    walk({Call::malloc}, minAllocations);
    std::printf("struck: %zu calls, %zu allocations\n", points[0], points[1]);
}

} // namespace vykeltest

#endif
