#ifndef VYKELDEV_CHECK_DEVICECHECKS_H
#define VYKELDEV_CHECK_DEVICECHECKS_H

#include "check/Rule.h"

namespace vykeldev::check {

/// The checks of rules, named like the rules: what a device reports.
Check checkTokenPresent, checkTokensDiffer, checkTokenStable, checkTextsUtf8, checkTextsStay;

} // namespace vykeldev::check

#endif
