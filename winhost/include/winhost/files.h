#ifndef WINHOST_FILES_H
#define WINHOST_FILES_H

#include "winhost/security.h"
#include "winhost/types.h"
#include <string>

// Paths: `C:\...` is the path below $WINHOST_ROOT/c, looked up without regard to case. A relative path and
// one that begins with `/` are used unchanged. Narrow paths are UTF-8.
//
// Sharing: while a file is open with share mode 0, no process can open it again; while it is open at all, no
// process can delete, rename or replace it. Every other share mode shares everything. Only files that were
// opened through this stand-in (streams included) count.

#define GENERIC_READ 0x80000000
#define GENERIC_WRITE 0x40000000
#define DELETE 0x00010000
#define FILE_ADD_FILE 0x00000002
#define FILE_SHARE_READ 0x00000001
#define FILE_SHARE_WRITE 0x00000002
#define FILE_SHARE_DELETE 0x00000004
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define FILE_ATTRIBUTE_REPARSE_POINT 0x00000400
#define FILE_FLAG_OPEN_REPARSE_POINT 0x00200000
#define FILE_FLAG_DELETE_ON_CLOSE 0x04000000
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000
#define VOLUME_NAME_NT 0x00000002
#define INVALID_FILE_ATTRIBUTES (static_cast<DWORD>(-1))
#define FILE_BEGIN 0
#define MOVEFILE_REPLACE_EXISTING 0x00000001
#define MOVEFILE_WRITE_THROUGH 0x00000008
#define LOCKFILE_FAIL_IMMEDIATELY 0x00000001
#define LOCKFILE_EXCLUSIVE_LOCK 0x00000002

struct OVERLAPPED {
    ULONG_PTR Internal;
    DWORD Offset; ///< no effect, like OffsetHigh: a lock is always of the whole file
    DWORD OffsetHigh;
    HANDLE hEvent;
};
using LPOVERLAPPED = OVERLAPPED*;

struct WIN32_FILE_ATTRIBUTE_DATA {
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
};
using WIN32_FIND_DATAA = WIN32_FILE_ATTRIBUTE_DATA;
struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    DWORD dwVolumeSerialNumber;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
};
using LPBY_HANDLE_FILE_INFORMATION = BY_HANDLE_FILE_INFORMATION*;
enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };

extern "C" {

/// Both open a file, which CloseHandle closes; INVALID_HANDLE_VALUE on failure. `security` has an effect with
/// CREATE_NEW, of `attributes` only the three flags, `like` none. With FILE_FLAG_DELETE_ON_CLOSE the file
/// loses its name at once. A folder can be opened only with FILE_FLAG_BACKUP_SEMANTICS (otherwise
/// ERROR_ACCESS_DENIED). With FILE_FLAG_OPEN_REPARSE_POINT a link, which is a symbolic link here, is opened
/// itself, not what it leads to.
HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE like);
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE like);
/// Both read or write at the file's position. `overlapped` must be null.
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED overlapped);
/// Sets the file's position. `position` must be null and `method` FILE_BEGIN.
BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method);
/// Ends the file at its position: cuts or extends it.
BOOL SetEndOfFile(HANDLE file);
/// Gives the file's size in bytes.
BOOL GetFileSizeEx(HANDLE file, PLARGE_INTEGER size);
/// Gives FILE_ATTRIBUTE_REPARSE_POINT for a link, FILE_ATTRIBUTE_DIRECTORY or _ARCHIVE, and _READONLY when
/// the owner may not write; and how many names the file has.
BOOL GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION information);
/// Gives the path under which the file is found without any link, a path of this machine. `flags` must be
/// VOLUME_NAME_NT. Returns the length; the size needed, with the terminator, when `size` is too small; 0 on
/// failure.
DWORD GetFinalPathNameByHandleW(HANDLE file, LPWSTR buffer, DWORD size, DWORD flags);
/// Writes to the disk what the system still holds in memory of the file.
BOOL FlushFileBuffers(HANDLE file);
/// Closes a file or an event.
BOOL CloseHandle(HANDLE handle);

/// Deletes a file. Fails with ERROR_SHARING_VIOLATION while it is open, with ERROR_ACCESS_DENIED for a
/// folder.
BOOL DeleteFileW(LPCWSTR path);
/// Both rename within one volume and replace what is there, whatever `flags` says. They fail with
/// ERROR_ACCESS_DENIED when `to` is an open file or a directory, with ERROR_SHARING_VIOLATION when `from` is
/// open.
BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags);
BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags);
/// Makes a folder in an existing one, with the rights of `security` unless it is null.
BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security);
/// Removes an empty folder. Fails with ERROR_SHARING_VIOLATION while it is open, with ERROR_DIR_NOT_EMPTY
/// when it is not empty.
BOOL RemoveDirectoryW(LPCWSTR path);
/// FILE_ATTRIBUTE_DIRECTORY or _ARCHIVE, and _READONLY when the owner may not write; INVALID_FILE_ATTRIBUTES
/// on failure.
DWORD GetFileAttributesW(LPCWSTR path);
/// Gives a WIN32_FILE_ATTRIBUTE_DATA.
BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data);
/// Gives the absolute path. A relative path starts at the working directory. `.` and `..` are resolved
/// without a look at the disk. Returns the length; the size needed, with the terminator, when `size` is too
/// small; 0 on failure. `name` must be null.
DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* name);

/// Finds the one file of that name. Wildcards have no meaning, so there is no FindNextFile.
HANDLE FindFirstFileA(LPCSTR path, WIN32_FIND_DATAA* data);
/// Frees what FindFirstFileA returned.
BOOL FindClose(HANDLE find);

/// Locks the whole file, whatever the range, against all other handles and processes; a read-only file, too.
/// Every lock is exclusive. Closing the handle or its stream ends the lock. The call itself waits for the
/// lock; see GetOverlappedResult.
BOOL LockFileEx(HANDLE file, DWORD flags, DWORD reserved, DWORD low, DWORD high, LPOVERLAPPED overlapped);
/// Ends the lock of the handle; no error when it has none.
BOOL UnlockFileEx(HANDLE file, DWORD reserved, DWORD low, DWORD high, LPOVERLAPPED overlapped);
/// Waits for the lock of a LockFileEx that was made to fail with ERROR_IO_PENDING (winhost/faults.h),
/// or fails with ERROR_IO_INCOMPLETE when it is not to wait; after any other LockFileEx it returns at once.
BOOL GetOverlappedResult(HANDLE file, LPOVERLAPPED overlapped, LPDWORD transferred, BOOL wait);
}

namespace winhost {

/// The path on this machine that a Windows path means, for programs that do there what Windows has no call
/// for; empty when it means none.
std::string hostPath(const std::string& path);

} // namespace winhost

#endif
