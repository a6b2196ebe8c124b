#ifndef VYKELDEV_CHECK_STATUSCHECKS_H
#define VYKELDEV_CHECK_STATUSCHECKS_H

#include "check/Rule.h"

namespace vykeldev::check {

/// The checks of rules, named like the rules: status blocks and exceptions.
Check checkFirstErrorWins, checkStatusGuard, checkNoException;

} // namespace vykeldev::check

#endif
