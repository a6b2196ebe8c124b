#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "winhost/files.h"
#include <cerrno>
#include <sys/file.h>

using winhost::Call;

namespace {

/// Uses flock, not record locks: such a lock belongs to the open file. So it also works between the handles
/// of one process, needs no right to write, and ends with the last close. On failure false, with the last
/// error set.
bool lockWholeFile(HANDLE file, int operation) noexcept {
    int result = 0;
    do {
        result = ::flock(winhost::descriptorOf(file), operation);
    } while (result != 0 && errno == EINTR);
    if (result != 0)
        winhost::setErrorFromErrno();
    return result == 0;
}

} // namespace

extern "C" {

BOOL LockFileEx(HANDLE file, DWORD flags, DWORD, DWORD, DWORD, LPOVERLAPPED overlapped) {
    if (winhost::fails(Call::LockFileEx)) {
        if (GetLastError() == ERROR_IO_PENDING)
            overlapped->Internal = STATUS_PENDING;
        return FALSE;
    }
    const int wait = (flags & LOCKFILE_FAIL_IMMEDIATELY) != 0 ? LOCK_NB : 0;
    return lockWholeFile(file, LOCK_EX | wait) ? TRUE : FALSE;
}

BOOL UnlockFileEx(HANDLE file, DWORD, DWORD, DWORD, LPOVERLAPPED) {
    return !winhost::fails(Call::UnlockFileEx) && lockWholeFile(file, LOCK_UN) ? TRUE : FALSE;
}

BOOL GetOverlappedResult(HANDLE file, LPOVERLAPPED overlapped, LPDWORD transferred, BOOL wait) {
    if (winhost::fails(Call::GetOverlappedResult))
        return FALSE;
    if (overlapped->Internal == STATUS_PENDING && wait == FALSE) {
        SetLastError(ERROR_IO_INCOMPLETE);
        return FALSE;
    }
    if (overlapped->Internal == STATUS_PENDING && !lockWholeFile(file, LOCK_EX))
        return FALSE;
    overlapped->Internal = 0;
    *transferred = 0;
    return TRUE;
}
}
