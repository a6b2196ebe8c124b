#ifndef WINHOST_ERRORNUMBERS_H
#define WINHOST_ERRORNUMBERS_H

#include "HostPath.h"
#include "winhost/errors.h"

namespace winhost {

/// The Windows error of an errno value; ERROR_GEN_FAILURE for an unknown one.
DWORD windowsError(int number) noexcept;
/// The errno value of a Windows error; EIO for an unknown one.
int errnoOf(DWORD error) noexcept;

/// Sets the last error from errno.
void setErrorFromErrno() noexcept;
/// The same for a call on a path: a missing folder gives another error than a missing file.
void setErrorFromErrno(const HostPath& path) noexcept;

} // namespace winhost

#endif
