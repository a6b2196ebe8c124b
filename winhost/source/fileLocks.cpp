#include "descriptors.h"
#include "faultCheck.h"
#include "winhost/files.h"
#include <cerrno>
#include <sys/file.h>

using winhost::Call;

namespace {

/// flock, not record locks: it belongs to the open file, so it holds between the handles of one process, too,
/// asks for no right to write, and ends with the last close.
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
    const int kind = (flags & LOCKFILE_EXCLUSIVE_LOCK) != 0 ? LOCK_EX : LOCK_SH;
    const DWORD fault = winhost::faultOf(Call::LockFileEx);
    if (fault != 0) {
        if (fault == ERROR_IO_PENDING) {
            overlapped->Internal = STATUS_PENDING;
            overlapped->InternalHigh = static_cast<ULONG_PTR>(kind); // for GetOverlappedResult
        }
        SetLastError(fault);
        return FALSE;
    }
    const int wait = (flags & LOCKFILE_FAIL_IMMEDIATELY) != 0 ? LOCK_NB : 0;
    return lockWholeFile(file, kind | wait) ? TRUE : FALSE;
}

BOOL UnlockFileEx(HANDLE file, DWORD, DWORD, DWORD, LPOVERLAPPED) {
    return !winhost::fails(Call::UnlockFileEx) && lockWholeFile(file, LOCK_UN) ? TRUE : FALSE;
}

BOOL GetOverlappedResult(HANDLE file, LPOVERLAPPED overlapped, LPDWORD transferred, BOOL wait) {
    if (winhost::fails(Call::GetOverlappedResult))
        return FALSE;
    if (overlapped->Internal == STATUS_PENDING) {
        if (!lockWholeFile(file,
                           static_cast<int>(overlapped->InternalHigh) | (wait != FALSE ? 0 : LOCK_NB))) {
            if (GetLastError() == ERROR_LOCK_VIOLATION)
                SetLastError(ERROR_IO_INCOMPLETE);
            return FALSE;
        }
        overlapped->Internal = 0;
        overlapped->InternalHigh = 0;
    }
    *transferred = 0;
    return TRUE;
}
}
