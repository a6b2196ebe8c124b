#ifndef VYKELDEV_MACHINE_CAUSE_H
#define VYKELDEV_MACHINE_CAUSE_H

#include "system/Failure.h"

namespace vykeldev {

/// A step of the library. Its initialisation reads only the registry key.
enum class LibraryStep { Initialisation, Other };

/// The failure of a step of the library, with the meaning and the remedy of the one thing that is wrong on
/// this machine. Looks at the registry key or at the folder when the code can come from there; see
/// checkFolder for what that touches. Returns the failure as it is when nothing is wrong there now.
Failure withCause(const Failure& failure, LibraryStep step = LibraryStep::Other);

} // namespace vykeldev

#endif
