#ifndef VYKELDEV_MACHINE_LOCKS_H
#define VYKELDEV_MACHINE_LOCKS_H

#include "system/Console.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Files.h"
#include <chrono>
#include <cstdio>
#include <io.h>
#include <windows.h>

namespace vykeldev {

constexpr std::chrono::seconds longestLockWait{2};

/// Tries once to take the lock that vyfile::FileLockImpl takes on a lock file. Returns the system's error: 0
/// for success, ERROR_LOCK_VIOLATION when another process has it.
inline DWORD tryLock(HANDLE file) {
    constexpr DWORD wholeFile = 0xFFFFFFFF; // in both halves of the length
    OVERLAPPED overlapped = {};
    return LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, wholeFile, wholeFile,
                      &overlapped) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

/// Whether a process has the lock on a lock file now.
inline bool isLocked(const std::string& path) {
    const FileHandle file = openFile(path, GENERIC_READ, OPEN_EXISTING);
    return file && tryLock(file.get()) == ERROR_LOCK_VIOLATION;
}

/// Takes the lock of tryLock without the library's unbounded wait. It ends with the stream. Calls `onWait`
/// with the time waited so far before each further try. Returns the system's error: 0 for success,
/// ERROR_LOCK_VIOLATION when another process kept the lock for all of longestLockWait. Throws Stopped.
template <class OnWait>
DWORD lockInTime(std::FILE* stream, OnWait onWait) {
    using Clock = std::chrono::steady_clock;
    constexpr DWORD millisecondsBetweenTries = 20;
    const HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    for (const Clock::time_point start = Clock::now();;) {
        const DWORD error = tryLock(file);
        const Clock::duration waited = Clock::now() - start;
        if (error != ERROR_LOCK_VIOLATION || waited >= longestLockWait)
            return error;
        if (StopRequest::isMade())
            throw Stopped();
        onWait(waited);
        Sleep(millisecondsBetweenTries);
    }
}

/// Takes the lock of the lock file at `path`, which `stream` has open. Throws Failure when that is not
/// possible in time.
inline void lockOrThrow(std::FILE* stream, const std::string& path) {
    if (const DWORD error = lockInTime(stream, [](auto) {}); error != ERROR_SUCCESS)
        throw systemFailure("locking '" + printable(path) + "'", error,
                            "Most likely a client hangs in a refresh; 'vykeldev doctor' says more.");
}

} // namespace vykeldev

#endif
