#ifndef WINHOST_TEXT_H
#define WINHOST_TEXT_H

#include "winhost/types.h"

#define CP_UTF8 65001
#define MB_ERR_INVALID_CHARS 0x00000008

extern "C" {

/// Converts UTF-8 to UTF-16; `codePage` must be CP_UTF8. Invalid text becomes U+FFFD; with the flag above the
/// call fails with ERROR_NO_UNICODE_TRANSLATION. The length -1 means a terminated text; then the result is
/// terminated, too. Returns the length of the result in units, also when size is 0 and nothing is written; 0
/// on failure.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR buffer, int size);
/// The same in the other direction. No flag has an effect: invalid text becomes U+FFFD.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR buffer, int size,
                        LPCSTR defaultChar, LPBOOL usedDefaultChar);
}

#endif
