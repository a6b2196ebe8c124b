#ifndef WINHOST_SHLOBJ_H
#define WINHOST_SHLOBJ_H

#include "windows.h"

#define CSIDL_COMMON_APPDATA 0x0023
#define SHGFP_TYPE_CURRENT 0

/// Gives the common application data folder, `C:\ProgramData` unless "User Shell Folders" in the registry
/// names another; `folder` must be CSIDL_COMMON_APPDATA. `path` has room for MAX_PATH units. A folder that
/// does not exist gives the HRESULT of ERROR_FILE_NOT_FOUND.
extern "C" HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path);

#endif
