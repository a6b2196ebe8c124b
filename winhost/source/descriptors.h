#ifndef WINHOST_DESCRIPTORS_H
#define WINHOST_DESCRIPTORS_H

#include "HostPath.h"
#include "winhost/types.h"
#include <unistd.h>

namespace winhost {

/// Owns a file descriptor. A negative number means none.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : descriptor(number) {}
    ~Descriptor() {
        if (descriptor >= 0)
            ::close(descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    /// The descriptor, or the negative number that was given instead of one.
    int get() const noexcept { return descriptor; }

private:
    const int descriptor;
};

/// The HANDLE of a descriptor: computed, so that a stream's handle needs no table, and a multiple of 4 as on
/// Windows.
inline HANDLE handleOf(int descriptor) noexcept {
    return reinterpret_cast<HANDLE>((static_cast<LONG_PTR>(descriptor) + 1) * 4);
}
/// The descriptor of a HANDLE; negative for null and INVALID_HANDLE_VALUE.
inline int descriptorOf(HANDLE handle) noexcept {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle) / 4 - 1);
}

/// How a file is to be opened. Reading is always allowed.
struct OpenRequest {
    bool write = false;
    bool create = false;     ///< create the file when it is missing
    bool mustCreate = false; ///< fail when the file exists
    bool truncate = false;
    bool append = false;
    bool denySharing = false; ///< the share mode 0
    bool mayBeFolder = false;
    bool linkItself = false; ///< open a symbolic link, not what it leads to
};

/// Opens a file under the sharing rules of winhost/files.h. Returns its descriptor; on failure -1, with errno
/// and the last error set.
int openFile(const HostPath& path, const OpenRequest& request) noexcept;

/// Writes all bytes, in several calls if need be. Returns the number written: fewer after a failure, with
/// errno set.
std::size_t writeAll(int descriptor, const void* bytes, std::size_t size) noexcept;

/// Whether any process holds the file open through openFile.
bool isHeldOpen(const HostPath& path) noexcept;

/// Deletes a file (not a folder) that no process holds open. On failure errno and the last error are set.
bool deleteFile(const HostPath& path) noexcept;

} // namespace winhost

#endif
