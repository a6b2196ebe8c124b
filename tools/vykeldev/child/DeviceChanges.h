#ifndef VYKELDEV_CHILD_DEVICECHANGES_H
#define VYKELDEV_CHILD_DEVICECHANGES_H

#include "child/Devices.h"
#include <vector>

namespace vykeldev {

/// One change of one device, or that an edit left it as it is. Both states are the same unless it was
/// renumbered or renamed.
struct DeviceChange {
    enum class Kind { Added, Removed, Renumbered, Renamed, Kept };
    Kind kind;
    DeviceInfo before;
    DeviceInfo now;
};

/// The changes between two readings: first the removed devices in their old order, then all other changes in
/// the order of the list. A device is the same in both when the token is; of several devices with one token,
/// the first before is the first now, and so on.
std::vector<DeviceChange> findChanges(const std::vector<DeviceInfo>& before,
                                      const std::vector<DeviceInfo>& now);

} // namespace vykeldev

#endif
