#include "descriptors.h"

#include "errorNumbers.h"
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace winhost {

namespace {

/// The sharing mode is a lock on one byte far beyond the end of the file. An open that denies sharing takes
/// an exclusive lock, every other open a shared one. Such a lock belongs to the open file, like a lock by
/// flock, but does not conflict with one.
struct flock sharingLock(short type) noexcept {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = off_t{1} << 62U;
    lock.l_len = 1;
    return lock;
}

/// False when another process or handle has the file open in a way that forbids this.
bool claimShare(int descriptor, bool denySharing) noexcept {
    struct flock lock = sharingLock(denySharing ? F_WRLCK : F_RDLCK);
    // Other errors (a pipe, a file system without such locks): sharing cannot be enforced here; open anyway.
    return ::fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

bool isDirectory(int descriptor) noexcept {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

int openFile(const HostPath& path, const OpenRequest& request) noexcept {
    // An exclusive lock needs a descriptor for writing, a shared one a descriptor for reading. The file is
    // truncated only when the lock is held.
    const int flags = O_CLOEXEC | (request.write || request.denySharing ? O_RDWR : O_RDONLY) |
                      (request.create ? O_CREAT : 0) | (request.mustCreate ? O_EXCL : 0) |
                      (request.append ? O_APPEND : 0) | (request.linkItself ? O_NOFOLLOW : 0);
    int descriptor = ::open(path.c_str(), flags, 0666);
    if (descriptor < 0 && errno == ELOOP && request.linkItself)
        descriptor = ::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor < 0) {
        setErrorFromErrno(path);
        return -1;
    }
    const bool refused = !request.mayBeFolder && isDirectory(descriptor);
    const bool rival = !refused && !claimShare(descriptor, request.denySharing);
    if (refused || rival || (request.truncate && ::ftruncate(descriptor, 0) != 0 && errno != EINVAL)) {
        ::close(descriptor);
        SetLastError(rival ? ERROR_SHARING_VIOLATION : ERROR_ACCESS_DENIED);
        errno = EACCES;
        return -1;
    }
    return descriptor;
}

std::size_t writeAll(int descriptor, const void* bytes, std::size_t size) noexcept {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::write(descriptor, static_cast<const char*>(bytes) + done, size - done);
        if (count < 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
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

} // namespace winhost
