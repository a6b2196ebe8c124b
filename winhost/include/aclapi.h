#ifndef WINHOST_ACLAPI_H
#define WINHOST_ACLAPI_H

#include "winhost/security.h"

enum SE_OBJECT_TYPE { SE_FILE_OBJECT = 1 };

extern "C" {

/// Gives the owner of an open file, whichever `parts` are asked for, in a descriptor that LocalFree frees.
/// The other pointers must be null. Returns the error.
DWORD GetSecurityInfo(HANDLE object, SE_OBJECT_TYPE type, SECURITY_INFORMATION parts, PSID* owner,
                      PSID* group, PACL* list, PACL* audit, PSECURITY_DESCRIPTOR* descriptor);
}

#endif
