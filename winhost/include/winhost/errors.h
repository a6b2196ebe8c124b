#ifndef WINHOST_ERRORS_H
#define WINHOST_ERRORS_H

#include "winhost/types.h"

#define ERROR_SUCCESS 0
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_PATH_NOT_FOUND 3
#define ERROR_TOO_MANY_OPEN_FILES 4
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_NOT_ENOUGH_MEMORY 8
#define ERROR_OUTOFMEMORY 14
#define ERROR_NOT_SAME_DEVICE 17
#define ERROR_WRITE_PROTECT 19
#define ERROR_SEEK 25
#define ERROR_GEN_FAILURE 31
#define ERROR_SHARING_VIOLATION 32
#define ERROR_LOCK_VIOLATION 33
#define ERROR_NOT_SUPPORTED 50
#define ERROR_FILE_EXISTS 80
#define ERROR_INVALID_PARAMETER 87
#define ERROR_DISK_FULL 112
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_INVALID_NAME 123
#define ERROR_MOD_NOT_FOUND 126
#define ERROR_PROC_NOT_FOUND 127
#define ERROR_DIR_NOT_EMPTY 145
#define ERROR_NOT_LOCKED 158
#define ERROR_ALREADY_EXISTS 183
#define ERROR_BAD_EXE_FORMAT 193
#define ERROR_FILENAME_EXCED_RANGE 206
#define ERROR_MORE_DATA 234
#define ERROR_NO_MORE_ITEMS 259
#define ERROR_MR_MID_NOT_FOUND 317
#define ERROR_IO_INCOMPLETE 996
#define ERROR_IO_PENDING 997
#define ERROR_BADDB 1009
#define ERROR_KEY_DELETED 1018
#define ERROR_NO_UNICODE_TRANSLATION 1113
#define ERROR_IO_DEVICE 1117
#define ERROR_NO_SYSTEM_RESOURCES 1450

#define S_OK (static_cast<HRESULT>(0))
#define E_FAIL (static_cast<HRESULT>(0x80004005))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057))
#define STATUS_NO_MEMORY 0xC0000017
#define STATUS_PENDING 0x00000103

#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x00000100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000

extern "C" {

/// The last error of the calling thread. All libraries of the process share it. A call that succeeds need not
/// reset it.
DWORD GetLastError();
/// Sets the last error of the calling thread.
void SetLastError(DWORD error);

/// Both give the English text of a system error, with CR LF at its end. `flags` must be allocate-buffer,
/// from-system and ignore-inserts: `buffer` is then the address of a pointer to the text, which the caller
/// frees with LocalFree. Returns the length, or 0 with ERROR_MR_MID_NOT_FOUND for a code that has no text
/// here.
DWORD FormatMessageA(DWORD flags, LPCVOID source, DWORD error, DWORD language, LPSTR buffer, DWORD size,
                     void* arguments);
DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD error, DWORD language, LPWSTR buffer, DWORD size,
                     void* arguments);
/// Frees a message, or nothing for null. Returns null, or the handle on failure.
HLOCAL LocalFree(HLOCAL memory);
}

#endif
