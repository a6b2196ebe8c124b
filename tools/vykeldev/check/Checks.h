#ifndef VYKELDEV_CHECK_CHECKS_H
#define VYKELDEV_CHECK_CHECKS_H

#include "check/Rule.h"

/// The check of each rule, named like the rule.
namespace vykeldev::check {

// LifeChecks.cpp: the library, its entry points, the life of lists.
Check checkLibraryLoads, checkEntryPoints, checkInitialises, checkReload, checkNewList, checkInterfaceVersion,
    checkAttachDetach, checkReleaseFrees, checkThreads;

// ListChecks.cpp: refreshing, counting, fetching.
Check checkEmptyBeforeRefresh, checkRefresh, checkDevices, checkDevicesStay, checkIndexBeyond,
    checkMinimumVersion, checkStaleCheap, checkStaleSettles;

// DeviceChecks.cpp: what a device reports.
Check checkTokenPresent, checkTokensDiffer, checkTokenStable, checkTextsUtf8, checkTextsStay;

// AlteringChecks.cpp: what a device keeps when it is set.
Check checkNumberKept, checkAliasKept;

// StatusChecks.cpp: status blocks and exceptions.
Check checkFirstErrorWins, checkStatusGuard, checkNoException;

} // namespace vykeldev::check

#endif
