#ifndef VYKELDEV_MACHINE_CAUSE_H
#define VYKELDEV_MACHINE_CAUSE_H

#include "system/Failure.h"

namespace vykeldev {

/// The failure of a step of the library, with the meaning and the remedy of the one thing that is wrong on
/// this machine. Looks at the registry key and the folder when the code can come from there; see checkFolder
/// for what that touches. When nothing is wrong there now, the failure says that.
Failure withCause(Failure failure);

} // namespace vykeldev

#endif
