#ifndef WINHOST_SDDL_H
#define WINHOST_SDDL_H

#include "winhost/security.h"

#define SDDL_REVISION_1 1

extern "C" {

/// Makes a descriptor, which LocalFree frees. It says that the owner may do everything, and all others what
/// `text` lets the users (BU) read, write and execute by a number, in entries that are not inherit-only.
BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR text, DWORD revision,
                                                          PSECURITY_DESCRIPTOR* descriptor, LPDWORD size);
}

#endif
