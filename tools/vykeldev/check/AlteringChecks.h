#ifndef VYKELDEV_CHECK_ALTERINGCHECKS_H
#define VYKELDEV_CHECK_ALTERINGCHECKS_H

#include "check/Rule.h"

namespace vykeldev::check {

/// The checks of rules, named like the rules: what a device keeps when it is set.
Check checkNumberKept, checkAliasKept;

} // namespace vykeldev::check

#endif
