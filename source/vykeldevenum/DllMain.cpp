#include <windows.h>

/// Nothing runs at load but the construction of static objects; the library wants no news of threads. (The
/// call fails in a library that has thread-local storage of its own, which does no harm.)
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(instance);
    return TRUE;
}
