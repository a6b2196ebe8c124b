#ifndef VYKELDEV_CHECK_LIFECHECKS_H
#define VYKELDEV_CHECK_LIFECHECKS_H

#include "check/Rule.h"

namespace vykeldev::check {

/// The checks of rules, named like the rules: the library, its entry points, the life of lists.
Check checkLibraryLoads, checkEntryPoints, checkInitialises, checkReload, checkNewList, checkInterfaceVersion,
    checkAttachDetach, checkReleaseFrees, checkThreads;

} // namespace vykeldev::check

#endif
