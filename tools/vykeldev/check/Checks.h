#ifndef VYKELDEV_CHECK_CHECKS_H
#define VYKELDEV_CHECK_CHECKS_H

#include "check/Rule.h"

/// The check of each rule, named like the rule. Each returns when the rule is kept, and throws Broken,
/// Questionable or Skipped otherwise.
namespace vykeldev::check {

// LifeChecks.cpp: the library, its entry points, the life of lists.
void checkLibraryLoads(const Subject& subject);
void checkEntryPoints(const Subject& subject);
void checkInitialises(const Subject& subject);
void checkReload(const Subject& subject);
void checkNewList(const Subject& subject);
void checkInterfaceVersion(const Subject& subject);
void checkAttachDetach(const Subject& subject);
void checkReleaseFrees(const Subject& subject);
void checkThreads(const Subject& subject);

// ListChecks.cpp: refreshing, counting, fetching.
void checkEmptyBeforeRefresh(const Subject& subject);
void checkRefresh(const Subject& subject);
void checkDevices(const Subject& subject);
void checkDevicesStay(const Subject& subject);
void checkIndexBeyond(const Subject& subject);
void checkMinimumVersion(const Subject& subject);
void checkStaleCheap(const Subject& subject);
void checkStaleSettles(const Subject& subject);

// DeviceChecks.cpp: what a device reports.
void checkTokenPresent(const Subject& subject);
void checkTokenStable(const Subject& subject);
void checkTextsUtf8(const Subject& subject);
void checkTextsStay(const Subject& subject);

// AlteringChecks.cpp: what a device keeps when it is set.
void checkNumberKept(const Subject& subject);
void checkAliasKept(const Subject& subject);

// StatusChecks.cpp: status blocks and exceptions.
void checkFirstErrorWins(const Subject& subject);
void checkStatusGuard(const Subject& subject);
void checkNoException(const Subject& subject);

} // namespace vykeldev::check

#endif
