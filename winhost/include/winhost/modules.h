#ifndef WINHOST_MODULES_H
#define WINHOST_MODULES_H

#include "winhost/types.h"

#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

extern "C" {

/// Loads a shared object. A bare name means a file in the working directory. No DllMain is called.
/// ERROR_MOD_NOT_FOUND when there is no such file, ERROR_BAD_EXE_FORMAT when it cannot be loaded.
HMODULE LoadLibraryExW(LPCWSTR path, HANDLE reserved, DWORD flags);
/// The address of a function of the module or of those that it needs; else null, with ERROR_PROC_NOT_FOUND.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
/// Gives back one reference to a module; the last one unloads it.
BOOL FreeLibrary(HMODULE module);
/// Finds the module of an address. `flags` must be the two flags above.
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR address, HMODULE* module);
/// Gives the path on this machine, not a `C:\...` path. A null module is the program.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size);
}

#endif
