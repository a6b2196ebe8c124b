#ifndef WINHOST_DESCRIPTORS_H
#define WINHOST_DESCRIPTORS_H

#include "HostPath.h"
#include "winhost/types.h"
#include <unistd.h>

namespace winhost {

/// Owns a file descriptor.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0)
            ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const noexcept { return number_; }

private:
    const int number_;
};

// A HANDLE is a descriptor in disguise, a multiple of 4 as on Windows: so a stream's handle needs no table.
inline HANDLE handleOf(int descriptor) noexcept {
    return reinterpret_cast<HANDLE>((static_cast<LONG_PTR>(descriptor) + 1) * 4);
}
inline int descriptorOf(HANDLE handle) noexcept {
    return static_cast<int>(reinterpret_cast<LONG_PTR>(handle) / 4 - 1); // no descriptor for null and -1
}

struct OpenRequest {
    bool write = false; ///< reading is always allowed
    bool create = false;
    bool mustCreate = false;
    bool truncate = false;
    bool append = false;
    bool denySharing = false;
};

/// Opens a file under the sharing rules of winhost/files.h. Returns its descriptor, or -1 with errno and the
/// last error set.
int openFile(const HostPath& path, const OpenRequest& request) noexcept;

/// Whether any process holds the file open through openFile.
bool isHeldOpen(const HostPath& path) noexcept;

/// Deletes a file that nobody holds open, never a folder. On failure errno and the last error are set.
bool deleteFile(const HostPath& path) noexcept;

/// The Windows error of an errno value.
DWORD windowsError(int errorNumber) noexcept;
/// Sets the last error from errno. A path tells a missing file from a missing folder.
void setErrorFromErrno() noexcept;
void setErrorFromErrno(const HostPath& path) noexcept;

} // namespace winhost

#endif
