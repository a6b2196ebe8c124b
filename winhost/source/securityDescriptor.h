#ifndef WINHOST_SECURITYDESCRIPTOR_H
#define WINHOST_SECURITYDESCRIPTOR_H

#include "winhost/security.h"
#include <sys/types.h>

namespace winhost {

/// What a PSECURITY_DESCRIPTOR points to.
struct SecurityDescriptor {
    uid_t owner;
    mode_t mode;
};

inline mode_t modeOf(PSECURITY_DESCRIPTOR descriptor) noexcept {
    return static_cast<const SecurityDescriptor*>(descriptor)->mode;
}

} // namespace winhost

#endif
