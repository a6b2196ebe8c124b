#include "platform/Process.h"

#include <cstdlib>
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace vykeldev::check {
namespace {

LONG CALLBACK endByException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (code >= 0xC0000000u) // an error, no notice for a debugger
        TerminateProcess(GetCurrentProcess(), code);
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

Usage usageOfThisProcess() {
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {counters.PagefileUsage, handles}; // the private bytes; PrivateUsage is 0 under Wine
}

void crashQuietly() noexcept {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

void endAtOnce() noexcept {
    TerminateProcess(GetCurrentProcess(), 0);
    std::abort(); // not reached
}

void unload(HMODULE library) noexcept {
    void* const handler = AddVectoredExceptionHandler(1, endByException); // before the loader's own
    FreeLibrary(library);
    RemoveVectoredExceptionHandler(handler);
}

} // namespace vykeldev::check
