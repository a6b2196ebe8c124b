#ifndef VYKELDEVENUM_DEVICELISTS_H
#define VYKELDEVENUM_DEVICELISTS_H

#include "PluginCall.h"
#include "vykel/IDevice.h"
#include "vykel/IDeviceList.h"
#include <cstdint>
#include <memory>
#include <vector>

/// The plug-ins' lists, and the devices that they hold.
namespace vykel {

/// Ends a list with its own release. Drops what the plug-in throws.
struct ReleaseList {
    void operator()(IDeviceList* list) const noexcept {
        callPluginQuietly([=] { list->release(); });
    }
};

/// An owned list of a plug-in.
using DeviceListPtr = std::unique_ptr<IDeviceList, ReleaseList>;

/// The devices of every plug-in list as of its last refresh, borrowed. One vector per list, in the order of
/// the lists; each in its list's own order. No entry is null.
using DeviceTable = std::vector<std::vector<IDevice*>>;

/// Refreshes a plug-in's list and replaces `devices` by the devices that it then holds; they are borrowed.
/// When the refresh fails, there are none. When the list refuses a device, that one and all later ones are
/// left out. Returns the list's code, which is negative in both cases. Throws std::bad_alloc or what the
/// plug-in threw.
std::int32_t collectDevices(IDeviceList& list, std::vector<IDevice*>& devices);

} // namespace vykel

#endif
