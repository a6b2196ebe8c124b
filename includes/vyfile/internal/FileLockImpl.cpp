#include "vyfile/internal/FileLockImpl.h"

#include "errors/Exception.h"
#include "errors/OsError.h"
#include "errors/ScopedStatus.h"
#include <io.h>

namespace vyfile {

namespace {

constexpr vyerr::RaiseSite eventSite{__FILE__, 41};
constexpr vyerr::RaiseSite waitSite{__FILE__, 67};
constexpr vyerr::RaiseSite lockSite{__FILE__, 72};
constexpr DWORD wholeFile = 0xFFFFFFFF; // in both halves of the length

HANDLE handleOf(std::FILE* stream) noexcept {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

[[noreturn]] void raiseOsFault(vyerr::RaiseSite site, DWORD error) {
    vyerr::ScopedStatus status;
    vyerr::ErrorInfo info(*status, vykel::toInteger(vykel::StatusCode::OsFault), vyerr::constant::osFault,
                          site);
    vyerr::addWin32Error(info, error);
    vyerr::throwFailure(status.get());
}

} // namespace

FileLockImpl::FileLockImpl(std::FILE* stream)
    : file(handleOf(stream)), event(CreateEventA(nullptr, FALSE, FALSE, nullptr)) {
    if (event == nullptr)
        raiseOsFault(eventSite, GetLastError());
    overlapped.hEvent = event.get();
}

void FileLockImpl::lock() {
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, wholeFile, wholeFile, &overlapped) != FALSE)
        return;
    if (const DWORD error = GetLastError(); error != ERROR_IO_PENDING)
        raiseOsFault(lockSite, error);
    DWORD transferred = 0;
    if (GetOverlappedResult(file, &overlapped, &transferred, TRUE) == FALSE)
        raiseOsFault(waitSite, GetLastError());
}

} // namespace vyfile
