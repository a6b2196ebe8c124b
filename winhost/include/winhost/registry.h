#ifndef WINHOST_REGISTRY_H
#define WINHOST_REGISTRY_H

#include "winhost/types.h"

// The registry is the file $WINHOST_ROOT/registry.reg, in the text format that Windows' registry editor
// exports and imports: UTF-8, or UTF-16LE with a byte-order mark. No file is an empty registry; a file that
// lacks the format's first line gives ERROR_BADDB. It is read afresh when it changed. Processes may write at
// once.

#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000002)))

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11
#define REG_OPTION_NON_VOLATILE 0
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

extern "C" {

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result);
/// Class texts and times are not kept: both come out empty.
LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR className, LPDWORD classLength, LPDWORD reserved, LPDWORD subkeys,
                         LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                         LPDWORD longestValueName, LPDWORD largestValue, LPDWORD security,
                         LPFILETIME lastWrite);
/// Subkeys come sorted without regard to case.
LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved,
                      LPWSTR className, LPDWORD classLength, LPFILETIME lastWrite);
/// Values come in the file's order.
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
LSTATUS RegCloseKey(HKEY key);

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR className, DWORD options,
                        REGSAM access, const LPSECURITY_ATTRIBUTES security, PHKEY result,
                        LPDWORD disposition);
LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size);
LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR subkey);
}

#endif
