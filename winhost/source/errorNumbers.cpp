#include "errorNumbers.h"

#include <cerrno>
#include <unistd.h>

namespace winhost {

namespace {

/// Pairs of an errno value and a Windows error. Both directions take the first match.
constexpr struct {
    int number;
    DWORD error;
} errorNumbers[] = {{ENOENT, ERROR_FILE_NOT_FOUND},
                    {ENOENT, ERROR_PATH_NOT_FOUND},
                    {ENOTDIR, ERROR_PATH_NOT_FOUND},
                    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
                    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
                    {EACCES, ERROR_ACCESS_DENIED},
                    {EACCES, ERROR_SHARING_VIOLATION},
                    {EPERM, ERROR_ACCESS_DENIED},
                    {EISDIR, ERROR_ACCESS_DENIED},
                    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
                    {EBADF, ERROR_INVALID_HANDLE},
                    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
                    {EXDEV, ERROR_NOT_SAME_DEVICE},
                    {EROFS, ERROR_WRITE_PROTECT},
                    {EWOULDBLOCK, ERROR_LOCK_VIOLATION},
                    {EEXIST, ERROR_FILE_EXISTS},
                    {EINVAL, ERROR_INVALID_PARAMETER},
                    {ENOSPC, ERROR_DISK_FULL},
                    {EDQUOT, ERROR_DISK_FULL},
                    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
                    {EIO, ERROR_IO_DEVICE}};

} // namespace

DWORD windowsError(int number) noexcept {
    for (const auto& row : errorNumbers)
        if (row.number == number)
            return row.error;
    return ERROR_GEN_FAILURE;
}

int errnoOf(DWORD error) noexcept {
    for (const auto& row : errorNumbers)
        if (row.error == error)
            return row.number;
    return EIO;
}

void setErrorFromErrno() noexcept {
    SetLastError(windowsError(errno));
}

void setErrorFromErrno(const HostPath& path) noexcept {
    const int number = errno;
    const bool noFolder = number == ENOENT && ::access(path.folder().c_str(), F_OK) != 0;
    SetLastError(noFolder ? ERROR_PATH_NOT_FOUND : windowsError(number));
    errno = number;
}

} // namespace winhost
