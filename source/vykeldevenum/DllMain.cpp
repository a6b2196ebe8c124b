#include <windows.h>

/// At load only static objects are constructed. The library needs no notice of new threads. (The call fails
/// in a library that has thread-local storage of its own, which does no harm.)
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(instance);
    return TRUE;
}
