#ifndef VYKELDEV_CHECK_LISTCHECKS_H
#define VYKELDEV_CHECK_LISTCHECKS_H

#include "check/Rule.h"

namespace vykeldev::check {

/// The checks of rules, named like the rules: refreshing, counting, fetching.
Check checkEmptyBeforeRefresh, checkRefresh, checkDevices, checkDevicesStay, checkIndexBeyond,
    checkMinimumVersion, checkStaleCheap, checkStaleSettles;

} // namespace vykeldev::check

#endif
