#ifndef WINHOST_TYPES_H
#define WINHOST_TYPES_H

#include <cstddef>
#include <cstdint>

// The sizes of 64-bit Windows: DWORD and LONG have 32 bits, WCHAR has 16.
using BOOL = int;
using BYTE = std::uint8_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using WCHAR = char16_t;
using HRESULT = LONG;
using LSTATUS = LONG;
using REGSAM = DWORD;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPBOOL = BOOL*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;

using HANDLE = void*;
using HLOCAL = HANDLE;
using HKEY = struct HKEY__*;
using PHKEY = HKEY*;
using HMODULE = struct HINSTANCE__*;
using HWND = HANDLE;
using FARPROC = LONG_PTR (*)();
using LPSECURITY_ATTRIBUTES = struct SECURITY_ATTRIBUTES*;

struct LARGE_INTEGER {
    LONGLONG QuadPart;
};
using PLARGE_INTEGER = LARGE_INTEGER*;

/// Units of 100 ns since the start of 1601.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

#define WINAPI
#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

#endif
