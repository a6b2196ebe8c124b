#ifndef WINHOST_FILES_H
#define WINHOST_FILES_H

#include "winhost/types.h"

// Paths: `C:\...` lies below $WINHOST_ROOT/c, found without regard to case; a path that begins with `/` and a
// relative path are taken as they are. Narrow paths are UTF-8.
//
// Sharing: a file opened with share mode 0 can't be opened again, and no open file can be deleted, renamed or
// replaced, by whatever process. Any other share mode shares everything. Only files opened through this
// stand-in (streams included) take part.

#define GENERIC_READ 0x80000000
#define GENERIC_WRITE 0x40000000
#define DELETE 0x00010000
#define FILE_READ_DATA 0x0001
#define FILE_WRITE_DATA 0x0002
#define FILE_APPEND_DATA 0x0004
#define FILE_READ_ATTRIBUTES 0x0080
#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define INVALID_FILE_ATTRIBUTES (static_cast<DWORD>(-1))
#define FILE_BEGIN 0
#define FILE_CURRENT 1
#define FILE_END 2
#define MOVEFILE_REPLACE_EXISTING 0x00000001
#define MOVEFILE_WRITE_THROUGH 0x00000008
#define LOCKFILE_FAIL_IMMEDIATELY 0x00000001
#define LOCKFILE_EXCLUSIVE_LOCK 0x00000002

struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    char cFileName[MAX_PATH];
    char cAlternateFileName[14];
};
using LPWIN32_FIND_DATAA = WIN32_FIND_DATAA*;

struct WIN32_FILE_ATTRIBUTE_DATA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
};
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };

extern "C" {

/// `attributes`, `security` and `like` have no effect. A directory can't be opened (ERROR_ACCESS_DENIED).
HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE like);
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE like);
/// Reading and writing are at the file's position; `overlapped` must be null.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED overlapped);
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method);
BOOL SetEndOfFile(HANDLE file);
BOOL GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
/// The creation time is given as the last-write time.
BOOL FlushFileBuffers(HANDLE file);
/// For files and events.
BOOL CloseHandle(HANDLE handle);

BOOL DeleteFileW(LPCWSTR path);
/// One rename, within one volume. Onto an open file or a directory: ERROR_ACCESS_DENIED; of an open file:
/// ERROR_SHARING_VIOLATION.
BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags);
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);
DWORD GetFileAttributesW(LPCWSTR path);
BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data);
/// A relative path is taken below the working directory; `.` and `..` are resolved by their text alone.
DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* name);

/// Finds the one file of that name; wildcards are not known, and so there is no FindNextFile.
HANDLE FindFirstFileA(LPCSTR path, LPWIN32_FIND_DATAA data);
BOOL FindClose(HANDLE find);

/// Locks the whole file, whatever the range: against all other handles and processes, on read-only files too.
/// Closing the handle or its stream ends the lock. The wait is within the call; see GetOverlappedResult.
BOOL LockFileEx(HANDLE file, DWORD flags, DWORD reserved, DWORD low, DWORD high, LPOVERLAPPED overlapped);
BOOL UnlockFileEx(HANDLE file, DWORD reserved, DWORD low, DWORD high, LPOVERLAPPED overlapped);
/// Waits for a lock whose LockFileEx was made to fail with ERROR_IO_PENDING (winhost/faults.h); for any other
/// record there is nothing to wait for.
BOOL GetOverlappedResult(HANDLE file, LPOVERLAPPED overlapped, LPDWORD transferred, BOOL wait);
}

#endif
