#include "winhost/files.h"

#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "securityDescriptor.h"
#include <sys/stat.h>
#include <unistd.h>

using winhost::Call;
using winhost::descriptorOf;

namespace {

/// The result of a call; `done` is false when it failed and set errno.
BOOL answer(bool done) noexcept {
    if (!done)
        winhost::setErrorFromErrno();
    return done ? TRUE : FALSE;
}

HANDLE createFile(const winhost::HostPath& path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                  DWORD disposition, DWORD attributes) noexcept {
    winhost::OpenRequest request;
    request.write = (access & GENERIC_WRITE) != 0;
    request.create = disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    request.mustCreate = disposition == CREATE_NEW;
    request.truncate = disposition == CREATE_ALWAYS;
    request.denySharing = share == 0;
    request.mayBeFolder = (attributes & FILE_FLAG_BACKUP_SEMANTICS) != 0;
    request.linkItself = (attributes & FILE_FLAG_OPEN_REPARSE_POINT) != 0;
    const int descriptor = winhost::openFile(path, request);
    if (descriptor < 0)
        return INVALID_HANDLE_VALUE;
    if ((attributes & FILE_FLAG_DELETE_ON_CLOSE) != 0)
        ::unlink(path.c_str());
    if (security != nullptr && request.mustCreate)
        ::fchmod(descriptor, winhost::modeOf(security->lpSecurityDescriptor) & 0666U);
    winhost::countResources(+1);
    return winhost::handleOf(descriptor);
}

} // namespace

extern "C" {

HANDLE CreateFileA(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE) {
    return winhost::fails(Call::CreateFileA)
               ? INVALID_HANDLE_VALUE
               : createFile(winhost::HostPath(path), access, share, security, disposition, attributes);
}

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                   DWORD attributes, HANDLE) {
    return winhost::fails(Call::CreateFileW)
               ? INVALID_HANDLE_VALUE
               : createFile(winhost::HostPath(path), access, share, security, disposition, attributes);
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED) {
    const DWORD fault = winhost::faultOf(Call::ReadFile);
    const ssize_t count = ::read(descriptorOf(file), buffer, fault != 0 ? size / 2 : size);
    *done = count < 0 ? 0 : static_cast<DWORD>(count);
    if (fault != 0) {
        SetLastError(fault);
        return FALSE;
    }
    return answer(count >= 0);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD done, LPOVERLAPPED) {
    const DWORD fault = winhost::faultOf(Call::WriteFile);
    *done = static_cast<DWORD>(winhost::writeAll(descriptorOf(file), buffer, fault != 0 ? size / 2 : size));
    if (fault != 0) {
        SetLastError(fault);
        return FALSE;
    }
    return answer(*done == size);
}

BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER, DWORD) {
    if (winhost::fails(Call::SetFilePointerEx))
        return FALSE;
    return answer(::lseek(descriptorOf(file), distance.QuadPart, SEEK_SET) >= 0);
}

BOOL SetEndOfFile(HANDLE file) {
    if (winhost::fails(Call::SetEndOfFile))
        return FALSE;
    const int descriptor = descriptorOf(file);
    const off_t at = ::lseek(descriptor, 0, SEEK_CUR);
    return answer(at >= 0 && ::ftruncate(descriptor, at) == 0);
}

BOOL GetFileSizeEx(HANDLE file, PLARGE_INTEGER size) {
    struct stat status = {};
    if (winhost::fails(Call::GetFileSizeEx) || !answer(::fstat(descriptorOf(file), &status) == 0))
        return FALSE;
    size->QuadPart = status.st_size;
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE file) {
    return winhost::fails(Call::FlushFileBuffers) ? FALSE : answer(::fsync(descriptorOf(file)) == 0);
}

BOOL CloseHandle(HANDLE handle) {
    const bool closed = ::close(descriptorOf(handle)) == 0;
    winhost::countResources(closed ? -1 : 0);
    return winhost::fails(Call::CloseHandle) ? FALSE : answer(closed);
}
}
