#ifndef WINHOST_SHLOBJ_H
#define WINHOST_SHLOBJ_H

#include "windows.h"

#define CSIDL_COMMON_APPDATA 0x0023
#define SHGFP_TYPE_CURRENT 0

/// The common application data folder, the one folder known here: `C:\ProgramData`, or what the registry's
/// "User Shell Folders" redirect it to. `path` has room for MAX_PATH units. A folder that does not exist
/// gives the HRESULT of ERROR_FILE_NOT_FOUND.
extern "C" HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD flags, LPWSTR path);

#endif
