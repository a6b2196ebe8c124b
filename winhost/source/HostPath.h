#ifndef WINHOST_HOSTPATH_H
#define WINHOST_HOSTPATH_H

#include "winhost/types.h"
#include <climits>
#include <string>
#include <string_view>

namespace winhost {

/// The one mapping of a Windows path to a path on this machine. Allocates nothing, so that it can't fail for
/// want of memory. A path that can't be mapped (a drive path while WINHOST_ROOT is unset, one that is too
/// long) becomes the empty path, which no system call finds.
class HostPath {
public:
    explicit HostPath(const char* path) noexcept;
    explicit HostPath(const WCHAR* path) noexcept;

    const char* c_str() const noexcept { return text_; }
    /// The same with its last component removed.
    HostPath folder() const noexcept;

private:
    void map(std::string_view path) noexcept;
    void matchCase(std::size_t begin) noexcept;
    char text_[PATH_MAX] = "";
};

/// The value of WINHOST_ROOT, without a separator at its end; empty when it is unset.
std::string_view hostRoot() noexcept;

} // namespace winhost

#endif
