#ifndef WINHOST_REGISTRY_H
#define WINHOST_REGISTRY_H

#include "winhost/types.h"

// The registry is the file $WINHOST_ROOT/registry.reg, in the text format that Windows' registry editor
// exports: UTF-8, or UTF-16LE with a byte-order mark. Without the file the registry is empty. A file without
// the format's first line gives ERROR_BADDB. A changed file is read again. Several processes may write at the
// same time.

#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000002)))

#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_OPTION_NON_VOLATILE 0

extern "C" {

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result);
/// Gives the number of subkeys; every other output must be null.
LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR className, LPDWORD classLength, LPDWORD reserved, LPDWORD subkeys,
                         LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                         LPDWORD longestValueName, LPDWORD largestValue, LPDWORD security,
                         FILETIME* lastWrite);
/// The subkeys are sorted without regard to case. `className`, `classLength` and `lastWrite` must be null.
LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved,
                      LPWSTR className, LPDWORD classLength, FILETIME* lastWrite);
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
LSTATUS RegCloseKey(HKEY key);

/// `disposition` must be null.
LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR className, DWORD options,
                        REGSAM access, const LPSECURITY_ATTRIBUTES security, PHKEY result,
                        LPDWORD disposition);
LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR subkey);
}

#endif
