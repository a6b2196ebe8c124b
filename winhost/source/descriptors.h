#ifndef WINHOST_DESCRIPTORS_H
#define WINHOST_DESCRIPTORS_H

#include "HostPath.h"
#include "winhost/types.h"
#include <unistd.h>

namespace winhost {

/// Owns a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : descriptor(number) {}
    ~Descriptor() {
        if (descriptor >= 0)
            ::close(descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const noexcept { return descriptor; }

private:
    const int descriptor;
};

// A HANDLE is computed from a descriptor, a multiple of 4 as on Windows. So a stream's handle needs no table.
inline HANDLE handleOf(int descriptor) noexcept {
    return reinterpret_cast<HANDLE>((static_cast<LONG_PTR>(descriptor) + 1) * 4);
}
inline int descriptorOf(HANDLE handle) noexcept {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle) / 4 - 1); // negative for null and -1
}

struct OpenRequest {
    bool write = false; ///< reading is always allowed
    bool create = false;
    bool mustCreate = false;
    bool truncate = false;
    bool append = false;
    bool denySharing = false;
};

/// Opens a file under the sharing rules of winhost/files.h. Returns its descriptor; on failure -1, with errno
/// and the last error set.
int openFile(const HostPath& path, const OpenRequest& request) noexcept;

/// Whether any process holds the file open through openFile.
bool isHeldOpen(const HostPath& path) noexcept;

/// Deletes a file (not a folder) that no process holds open. On failure errno and the last error are set.
bool deleteFile(const HostPath& path) noexcept;

} // namespace winhost

#endif
