#ifndef WINHOST_TEXT_H
#define WINHOST_TEXT_H

#include "winhost/types.h"

#define CP_UTF8 65001
#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_ERR_INVALID_CHARS 0x00000080

extern "C" {

/// `codePage` must be CP_UTF8. Invalid text becomes U+FFFD; with the flag above the call fails with
/// ERROR_NO_UNICODE_TRANSLATION.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR buffer, int size);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR buffer, int size,
                        LPCSTR defaultChar, LPBOOL usedDefaultChar);
}

#endif
