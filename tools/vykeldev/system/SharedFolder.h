#ifndef VYKELDEV_SYSTEM_SHAREDFOLDER_H
#define VYKELDEV_SYSTEM_SHAREDFOLDER_H

#include <windows.h>

namespace vykeldev {

/// Whether an owner is the administrators or the system; or the user of this process, when it runs as
/// administrator. On the host: root, or the user of this process.
bool isAdministrator(PSID owner);

} // namespace vykeldev

#endif
