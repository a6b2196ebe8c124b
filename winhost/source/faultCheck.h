#ifndef WINHOST_FAULTCHECK_H
#define WINHOST_FAULTCHECK_H

#include "winhost/faults.h"
#include <atomic>
#include <new>

namespace winhost {

/// How many faults are armed. While none is, a call only reads this number.
extern std::atomic<int> armedFaults;

/// Counts the call with every armed fault. Returns the error to fail with, or 0. Kills the process for
/// Effect::Kill.
DWORD armedFault(Call call) noexcept;

/// Every call that can fail asks this or fails(). Returns the error to fail with, or 0.
inline DWORD faultOf(Call call) noexcept {
    return armedFaults.load(std::memory_order_acquire) == 0 ? 0 : armedFault(call);
}

/// The same, for calls that report through the last error.
inline bool fails(Call call) noexcept {
    const DWORD error = faultOf(call);
    if (error != 0)
        SetLastError(error);
    return error != 0;
}

/// Adds to openResources().
void countResources(int change) noexcept;

/// Runs a body that allocates, because no C++ exception may leave a Windows call. Returns what it returns, or
/// `whenExhausted` with the last error set when memory is exhausted.
template <class Answer, class Body>
Answer guardMemory(Answer whenExhausted, Body body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return whenExhausted;
    }
}

} // namespace winhost

#endif
