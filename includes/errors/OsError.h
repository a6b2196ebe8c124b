#ifndef ERRORS_OSERROR_H
#define ERRORS_OSERROR_H

#include "errors/ErrorInfo.h"
#include <windows.h>

namespace vyerr {

/// Appends the object "internal_error" for a Win32 error: "api", "code", and "string" with the system's own
/// text, exactly as it gives it, when it has one.
void addWin32Error(ErrorInfo& info, DWORD error) noexcept;

/// Appends the object "internal_error" for a failed HRESULT: "api" and "code".
void addHresult(ErrorInfo& info, HRESULT result) noexcept;

} // namespace vyerr

#endif
