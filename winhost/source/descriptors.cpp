#include "descriptors.h"
#include "winhost/errors.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace winhost {

namespace {

// Sharing lives in a lock on one byte that no file reaches: an ordinary open holds it shared, an open that
// denies sharing holds it alone. These locks belong to the open file, like flock's, and don't meet flock's.
struct flock sharingLock(short type) noexcept {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = off_t{1} << 62U;
    lock.l_len = 1;
    return lock;
}

bool claimShare(int descriptor, bool alone) noexcept {
    struct flock lock = sharingLock(alone ? F_WRLCK : F_RDLCK);
    // Anything but a rival (no such locks on this file system, a pipe) leaves the file unprotected, not
    // unusable.
    return ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool isDirectory(int descriptor) noexcept {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

int openFile(const HostPath& path, const OpenRequest& request) noexcept {
    // Writers and those who claim the file alone need both directions for their lock. Truncation waits for
    // it.
    const int flags = O_CLOEXEC | (request.write || request.denySharing ? O_RDWR : O_RDONLY) |
                      (request.create ? O_CREAT : 0) | (request.mustCreate ? O_EXCL : 0) |
                      (request.append ? O_APPEND : 0);
    const int descriptor = ::open(path.c_str(), flags, 0666);
    if (descriptor < 0) {
        setErrorFromErrno(path);
        return -1;
    }
    const bool refused = isDirectory(descriptor);
    const bool rival = !refused && !claimShare(descriptor, request.denySharing);
    if (refused || rival || (request.truncate && ::ftruncate(descriptor, 0) != 0 && errno != EINVAL)) {
        ::close(descriptor);
        SetLastError(rival ? ERROR_SHARING_VIOLATION : ERROR_ACCESS_DENIED);
        errno = EACCES;
        return -1;
    }
    return descriptor;
}

bool isHeldOpen(const HostPath& path) noexcept {
    const Descriptor probe(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct flock lock = sharingLock(F_WRLCK);
    return probe.get() >= 0 && ::fcntl(probe.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

bool deleteFile(const HostPath& path) noexcept {
    if (isHeldOpen(path)) {
        SetLastError(ERROR_SHARING_VIOLATION);
        errno = EACCES;
        return false;
    }
    const bool done = ::unlink(path.c_str()) == 0;
    if (!done)
        setErrorFromErrno(path);
    return done;
}

DWORD windowsError(int errorNumber) noexcept {
    switch (errorNumber) {
    case ENOENT:
        return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EACCES:
    case EPERM:
    case EISDIR:
    case ENOTEMPTY:
        return ERROR_ACCESS_DENIED;
    case EBADF:
        return ERROR_INVALID_HANDLE;
    case ENOMEM:
        return ERROR_NOT_ENOUGH_MEMORY;
    case EXDEV:
        return ERROR_NOT_SAME_DEVICE;
    case EROFS:
        return ERROR_WRITE_PROTECT;
    case EWOULDBLOCK:
        return ERROR_LOCK_VIOLATION;
    case EEXIST:
        return ERROR_FILE_EXISTS;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EIO:
        return ERROR_IO_DEVICE;
    default:
        return ERROR_GEN_FAILURE;
    }
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
