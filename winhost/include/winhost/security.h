#ifndef WINHOST_SECURITY_H
#define WINHOST_SECURITY_H

#include "winhost/types.h"

// Rights are mode bits here, and users are uids. Mode bits cannot say that users may make files in a folder
// but no folders, or that they may replace some of its files but not delete others.

#define READ_CONTROL 0x00020000
#define WRITE_DAC 0x00040000
#define WRITE_OWNER 0x00080000
#define OWNER_SECURITY_INFORMATION 0x00000001
#define DACL_SECURITY_INFORMATION 0x00000004
#define PROTECTED_DACL_SECURITY_INFORMATION 0x80000000

using SECURITY_INFORMATION = DWORD;
using PSECURITY_DESCRIPTOR = void*;
using PSID = void*; ///< the address of a user's uid
using PACL = struct ACL*;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle; ///< no effect
};

extern "C" {

/// Gives the rights to an open file, whichever `parts` are asked for; the owner stays. Nobody may execute a
/// file.
BOOL SetKernelObjectSecurity(HANDLE object, SECURITY_INFORMATION parts, PSECURITY_DESCRIPTOR descriptor);
}

#endif
