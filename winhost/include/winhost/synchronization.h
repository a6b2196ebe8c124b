#ifndef WINHOST_SYNCHRONIZATION_H
#define WINHOST_SYNCHRONIZATION_H

#include "winhost/types.h"

#define INFINITE 0xFFFFFFFF

/// Room for a recursive mutex.
struct CRITICAL_SECTION {
    void* opaque[5];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

extern "C" {

/// Throws winhost::StructuredException where Windows would raise a structured exception.
void InitializeCriticalSection(LPCRITICAL_SECTION section);
void EnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);

/// An event only to be passed in an OVERLAPPED and closed; nothing here can wait for it.
HANDLE CreateEventA(LPSECURITY_ATTRIBUTES security, BOOL manualReset, BOOL initialState, LPCSTR name);

void Sleep(DWORD milliseconds);
DWORD GetCurrentProcessId();
ULONGLONG GetTickCount64();
/// Goes to standard error when WINHOST_DEBUG is set in the environment.
void OutputDebugStringA(LPCSTR text);
}

/// Both are full barriers and return the value found.
inline LONG InterlockedCompareExchange(LONG volatile* target, LONG exchange, LONG comparand) {
    __atomic_compare_exchange_n(target, &comparand, exchange, false, __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
inline LONG InterlockedExchange(LONG volatile* target, LONG value) {
    return __atomic_exchange_n(target, value, __ATOMIC_SEQ_CST);
}

#endif
