#ifndef WINHOST_MODULES_H
#define WINHOST_MODULES_H

#include "winhost/types.h"

#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

extern "C" {

/// Loads a shared object; a bare name is looked for in the working directory alone. No DllMain is called.
HMODULE LoadLibraryExW(LPCWSTR path, HANDLE reserved, DWORD flags);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
/// Finds the module of an address: `flags` must hold the from-address flag.
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// Answers the path on this machine, not a `C:\...` path. A null module is the program.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
BOOL DisableThreadLibraryCalls(HMODULE module);
}

#endif
