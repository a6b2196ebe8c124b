#include "check/Process.h"

#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>

namespace vykeldev::check {

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

} // namespace vykeldev::check
