#ifndef TESTS_FAULTS_H
#define TESTS_FAULTS_H

#include <cstddef>
#include <gtest/gtest.h>
#include <winhost/faults.h>

/// Only in the host build: a program that links Faults.cpp, and wraps malloc, calloc and realloc, can make
/// its allocations fail.
namespace vykeltest {

/// Makes the n-th allocation of this thread fail while this object lives, or all from there on. One at a
/// time.
class AllocationFault {
public:
    explicit AllocationFault(std::size_t nth, bool allFromThere = false);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    /// Counts an allocation. True when it must fail.
    bool strikes() noexcept;
    /// How many allocations have failed.
    std::size_t struck() const noexcept { return failures; }

private:
    std::size_t countdown;
    bool onward;
    std::size_t failures = 0;
};

/// Calls `run` while the first, the second, ... call of the system fails, until it makes no more calls, and
/// again while all from there on fail; then likewise with allocations. After each run calls
/// `check(onward, allocations)`, which makes everything ready for the next run. Expects at least so many
/// calls and allocations.
template <class Run, class Check>
void withEachFault(std::size_t minCalls, std::size_t minAllocations, Run run, Check check) {
    for (const bool allocations : {false, true})
        for (const bool onward : {false, true}) {
            std::size_t nth = 0;
            for (bool struck = true; struck && !testing::Test::HasFailure();) {
                const char* const what = allocations ? "allocation " : "call ";
                SCOPED_TRACE(what + std::to_string(++nth) + (onward ? " and on" : ""));
                if (allocations) {
                    const AllocationFault fault(nth, onward);
                    run();
                    struck = fault.struck() != 0;
                } else {
                    const auto effect = onward ? winhost::Effect::FailOnward : winhost::Effect::Fail;
                    const winhost::ScopedFault fault({winhost::Call::Any, nth, effect});
                    run();
                    struck = fault.struck() != 0;
                }
                check(onward, allocations);
            }
            EXPECT_GT(nth, allocations ? minAllocations : minCalls);
        }
}

} // namespace vykeltest

#endif
