#include "winhost/synchronization.h"

#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <pthread.h>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>

using winhost::Call;

namespace {

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION) &&
                  alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION),
              "the mutex fits into a critical section");

pthread_mutex_t* mutexOf(LPCRITICAL_SECTION section) noexcept {
    return reinterpret_cast<pthread_mutex_t*>(section);
}

} // namespace

extern "C" {

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    if (const DWORD error = winhost::faultOf(Call::InitializeCriticalSection))
        throw winhost::StructuredException{error};
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    ::pthread_mutex_init(new (section) pthread_mutex_t, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
    winhost::countResources(+1);
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    ::pthread_mutex_lock(mutexOf(section));
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    ::pthread_mutex_unlock(mutexOf(section));
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    ::pthread_mutex_destroy(mutexOf(section));
    winhost::countResources(-1);
}

HANDLE CreateEventA(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR) {
    if (winhost::fails(Call::CreateEventA))
        return nullptr;
    const int descriptor = ::eventfd(0, EFD_CLOEXEC);
    if (descriptor < 0) {
        winhost::setErrorFromErrno();
        return nullptr;
    }
    winhost::countResources(+1);
    return winhost::handleOf(descriptor);
}

void Sleep(DWORD milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(::getpid());
}

HANDLE GetCurrentProcess() {
    return INVALID_HANDLE_VALUE; // as on Windows
}

BOOL TerminateProcess(HANDLE process, UINT exitCode) {
    if (process == GetCurrentProcess())
        ::_exit(static_cast<int>(exitCode));
    return FALSE;
}

void RaiseException(DWORD code, DWORD, DWORD, const ULONG_PTR*) {
    throw winhost::StructuredException{code};
}

void OutputDebugStringA(LPCSTR text) {
    if (std::getenv("WINHOST_DEBUG") != nullptr)
        std::fputs(text, stderr);
}
}
