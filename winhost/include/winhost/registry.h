#ifndef WINHOST_REGISTRY_H
#define WINHOST_REGISTRY_H

#include "winhost/types.h"

// The registry is the file $WINHOST_ROOT/registry.reg, in the text format that Windows' registry editor
// exports: UTF-8, or UTF-16LE with a byte-order mark. Without the file the registry is empty. A file without
// the format's first line gives ERROR_BADDB. A changed file is read again. Several processes may write at the
// same time. Without WINHOST_ROOT the registry is empty, and nothing can be written (ERROR_PATH_NOT_FOUND).
//
// All calls return the error, 0 for success. A call on a key that was deleted gives ERROR_KEY_DELETED.

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

/// Opens an existing key, which RegCloseKey closes. Of the rights, only those to create a subkey and to set a
/// value are enforced.
LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY result);
/// Gives the number of subkeys; every other output must be null.
LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR className, LPDWORD classLength, LPDWORD reserved, LPDWORD subkeys,
                         LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                         LPDWORD longestValueName, LPDWORD largestValue, LPDWORD security,
                         FILETIME* lastWrite);
/// Gives the name of a subkey. They are sorted without regard to case. `className`, `classLength` and
/// `lastWrite` must be null.
LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved,
                      LPWSTR className, LPDWORD classLength, FILETIME* lastWrite);
/// Gives a value's type and bytes. With null data only the size; with too small a buffer ERROR_MORE_DATA and
/// the size needed. A null name is that of the default value.
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size);
/// Closes a handle; HKEY_LOCAL_MACHINE needs no closing.
LSTATUS RegCloseKey(HKEY key);

/// Opens a key, and creates what is missing of its path. `disposition` must be null.
LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR className, DWORD options,
                        REGSAM access, const LPSECURITY_ATTRIBUTES security, PHKEY result,
                        LPDWORD disposition);
/// Sets a value of a subkey, which is made when it is missing, to these bytes, whatever they hold. A null
/// `subkey` is the key itself.
LSTATUS RegSetKeyValueW(HKEY key, LPCWSTR subkey, LPCWSTR name, DWORD type, LPCVOID data, DWORD size);
/// Deletes a subkey and everything below it. `subkey` must name one.
LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR subkey);
}

#endif
