#ifndef TESTS_FAULTS_H
#define TESTS_FAULTS_H

#include <gtest/gtest.h>
#include <winhost/faults.h>

/// Only in the host build, in a program that links winhost_memory.
namespace vykeltest {

/// Calls `run` while the first, the second, ... call of the system fails, until it makes no more calls, and
/// again while all from there on fail; then likewise with allocations. After each run calls `check(fault)`,
/// which makes everything ready for the next run. Expects at least so many calls and allocations.
template <class Run, class Check>
void withEachFault(std::size_t minCalls, std::size_t minAllocations, Run run, Check check) {
    using winhost::Call;
    using winhost::Effect;
    for (const Call call : {Call::Any, Call::malloc})
        for (const Effect effect : {Effect::Fail, Effect::FailOnward}) {
            winhost::Fault fault{call, 0, effect};
            for (bool struck = true; struck && !testing::Test::HasFailure();) {
                ++fault.nth;
                SCOPED_TRACE(testing::Message() << (call == Call::Any ? "call " : "allocation ") << fault.nth
                                                << (effect == Effect::Fail ? "" : " and on"));
                {
                    const winhost::ScopedFault armed(fault);
                    run();
                    struck = armed.struck() != 0;
                }
                check(fault);
            }
            EXPECT_GT(fault.nth, call == Call::Any ? minCalls : minAllocations);
        }
}

} // namespace vykeltest

#endif
