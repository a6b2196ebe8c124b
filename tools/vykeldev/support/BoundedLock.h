#ifndef VYKELDEV_SUPPORT_BOUNDEDLOCK_H
#define VYKELDEV_SUPPORT_BOUNDEDLOCK_H

#include <chrono>
#include <cstdio>
#include <io.h>
#include <windows.h>

namespace vykeldev {

constexpr std::chrono::seconds longestLockWait{2};

/// Takes the lock that vyfile::FileLockImpl takes on a lock file, without its unbounded wait. It ends with
/// the stream. Calls `onWait` with the time waited so far before each further try. Returns the system's
/// error: 0 for success, ERROR_LOCK_VIOLATION when another process kept the lock for all of longestLockWait.
template <class OnWait>
DWORD lockInTime(std::FILE* stream, OnWait onWait) {
    using Clock = std::chrono::steady_clock;
    constexpr DWORD millisecondsBetweenTries = 20;
    constexpr DWORD wholeFile = 0xFFFFFFFF; // in both halves of the length
    const HANDLE file = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    for (const Clock::time_point start = Clock::now();;) {
        OVERLAPPED overlapped = {};
        if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, wholeFile, wholeFile,
                       &overlapped) != FALSE)
            return ERROR_SUCCESS;
        const DWORD error = GetLastError();
        const Clock::duration waited = Clock::now() - start;
        if (error != ERROR_LOCK_VIOLATION || waited >= longestLockWait)
            return error;
        onWait(waited);
        Sleep(millisecondsBetweenTries);
    }
}

} // namespace vykeldev

#endif
