#ifndef VYKELDEV_CHECK_MACHINELOCK_H
#define VYKELDEV_CHECK_MACHINELOCK_H

#include "pellumkelddk/user/FileLock.h"
#include <string>

namespace vykeldev::check {

/// Holds one of the machine's lock files as the library does, so that the library alters nothing meanwhile.
class MachineLock {
public:
    /// Waits for it, but not for long. Throws Skipped when it cannot be had on this machine.
    explicit MachineLock(const std::string& fileName);

private:
    vykel::FileStream stream_;
};

} // namespace vykeldev::check

#endif
