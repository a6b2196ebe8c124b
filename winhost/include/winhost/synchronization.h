#ifndef WINHOST_SYNCHRONIZATION_H
#define WINHOST_SYNCHRONIZATION_H

#include "winhost/types.h"

/// Memory for a recursive mutex.
struct CRITICAL_SECTION {
    void* opaque[5];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

extern "C" {

/// Makes a critical section, which DeleteCriticalSection ends. Throws winhost::StructuredException where
/// Windows would raise a structured exception.
void InitializeCriticalSection(LPCRITICAL_SECTION section);
/// Waits until no other thread is in the section. A thread may enter several times.
void EnterCriticalSection(LPCRITICAL_SECTION section);
/// Leaves the section once.
void LeaveCriticalSection(LPCRITICAL_SECTION section);
/// Ends a section that no thread is in.
void DeleteCriticalSection(LPCRITICAL_SECTION section);

/// Makes an event that fits into an OVERLAPPED. Nothing can wait for it or set it.
HANDLE CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState, LPCSTR name);

/// Suspends the calling thread.
void Sleep(DWORD milliseconds);
/// The number by which the system knows this process.
DWORD GetCurrentProcessId();
/// The handle that stands for this process; nobody closes it.
HANDLE GetCurrentProcess();
/// Ends this process at once with the exit code; no other can be named.
BOOL TerminateProcess(HANDLE process, UINT exitCode);
/// Throws winhost::StructuredException.
void RaiseException(DWORD code, DWORD flags, DWORD count, const ULONG_PTR* arguments);
/// Writes to standard error when the environment variable WINHOST_DEBUG is set.
void OutputDebugStringA(LPCSTR text);
}

/// Stores `exchange` when the value is `comparand`. A full memory barrier. Returns the previous value.
inline LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand) {
    __atomic_compare_exchange_n(target, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
/// Stores a value. A full memory barrier. Returns the previous value.
inline LONG InterlockedExchange(LONG volatile* target, LONG value) {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}

#endif
