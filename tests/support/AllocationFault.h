#ifndef TESTS_ALLOCATIONFAULT_H
#define TESTS_ALLOCATIONFAULT_H

#include <cstddef>

/// Host build alone: a program that links AllocationFault.cpp, and wraps malloc, calloc and realloc, can make
/// its allocations fail.
namespace vykeltest {

/// The allocations of this thread that fail: the n-th from now on, or all from there on.
struct AllocationFault {
    std::size_t countdown = 0; ///< 0: none fails
    bool onward = false;
    std::size_t struck = 0; ///< how many have failed
};

/// Puts a fault in place and gives back the one before, with its count.
AllocationFault armAllocationFault(const AllocationFault& fault);

} // namespace vykeltest

#endif
