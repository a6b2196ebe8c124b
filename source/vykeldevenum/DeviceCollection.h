#ifndef VYKELDEVENUM_DEVICECOLLECTION_H
#define VYKELDEVENUM_DEVICECOLLECTION_H

#include "vykel/IDeviceList.h"
#include <cstdint>
#include <vector>

namespace vykel {

/// Refreshes a plug-in's list and replaces `devices` by what it then holds; they are borrowed. After a
/// refresh that fails there are none; after a device that cannot be had all later ones are left out, too.
/// Returns the code that the list left, negative in these cases. Throws what the plug-in threw.
std::int32_t collectDevices(IDeviceList& list, std::vector<IDevice*>& devices);

} // namespace vykel

#endif
