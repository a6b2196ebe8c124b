#ifndef WINHOST_MODULES_H
#define WINHOST_MODULES_H

#include "winhost/types.h"

#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

extern "C" {

/// Loads a shared object. A bare name means a file in the working directory. No DllMain is called.
HMODULE LoadLibraryExW(LPCWSTR path, HANDLE reserved, DWORD flags);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
/// Finds the module of an address. `flags` must be the two flags above.
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// Gives the path on this machine, not a `C:\...` path. A null module is the program.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
}

#endif
