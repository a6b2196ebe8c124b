#ifndef WINHOST_HOSTPATH_H
#define WINHOST_HOSTPATH_H

#include "winhost/types.h"
#include <climits>
#include <string_view>

namespace winhost {

/// Maps a Windows path to a path on this machine. Allocates nothing, so it cannot fail when memory is
/// exhausted. A path that cannot be mapped (it is too long, or a drive path while WINHOST_ROOT is unset)
/// becomes the empty path, which no system call finds.
class HostPath {
public:
    /// From a UTF-8 path; null is the empty path.
    explicit HostPath(const char* path) noexcept;
    /// From a UTF-16 path; null is the empty path.
    explicit HostPath(const WCHAR* path) noexcept;

    /// The path on this machine.
    const char* c_str() const noexcept { return text; }
    /// The path without its last component.
    HostPath folder() const noexcept;

private:
    void map(std::string_view path) noexcept;
    void matchCase(std::size_t begin) noexcept;

    char text[PATH_MAX] = "";
};

/// The value of WINHOST_ROOT without separators at its end; empty when it is unset.
std::string_view hostRoot() noexcept;

} // namespace winhost

#endif
