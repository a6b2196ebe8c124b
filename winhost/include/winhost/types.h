#ifndef WINHOST_TYPES_H
#define WINHOST_TYPES_H

#include <cstddef>
#include <cstdint>

// The sizes of 64-bit Windows: DWORD and LONG have 32 bits, WCHAR has 16.
using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT_PTR = std::intptr_t;
using LONG_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using WCHAR = char16_t;
using HRESULT = LONG;
using LSTATUS = LONG;
using ACCESS_MASK = DWORD;
using REGSAM = ACCESS_MASK;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using PLONG = LONG*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;

using HANDLE = void*;
using HLOCAL = HANDLE;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HWND = struct HWND__*;
using FARPROC = INT_PTR (*)();
using LPSECURITY_ATTRIBUTES = struct SECURITY_ATTRIBUTES*;

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};
using PLARGE_INTEGER = LARGE_INTEGER*;

/// 100 ns units since the start of 1601.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using LPFILETIME = FILETIME*;

#define VOID void
#define WINAPI
#define APIENTRY
#define CALLBACK
#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

#endif
