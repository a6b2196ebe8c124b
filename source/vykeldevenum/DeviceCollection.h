#ifndef VYKELDEVENUM_DEVICECOLLECTION_H
#define VYKELDEVENUM_DEVICECOLLECTION_H

#include "vykel/IDeviceList.h"
#include <cstdint>
#include <vector>

namespace vykel {

/// Refreshes a plug-in's list and replaces `devices` by the devices that it then holds; they are borrowed.
/// When the refresh fails, there are none. When the list refuses a device, that one and all later ones are
/// left out. Returns the list's code, which is negative in both cases. Throws std::bad_alloc or what the
/// plug-in threw.
std::int32_t collectDevices(IDeviceList& list, std::vector<IDevice*>& devices);

} // namespace vykel

#endif
