#ifndef VYKELDEVENUM_IPELLUMKELPLUGINMANAGER_H
#define VYKELDEVENUM_IPELLUMKELPLUGINMANAGER_H

#include "DeviceLists.h"
#include <vector>

namespace vykel {

/// Supplies an aggregated list with the plug-ins' lists.
class IPellumKelPluginManager {
public:
    /// Appends one new list per plug-in that supplies one, in load order. A plug-in that fails adds none and
    /// is not reported.
    virtual void getDeviceLists(std::vector<DeviceListPtr>& lists) = 0;

    virtual ~IPellumKelPluginManager() = default;
};

} // namespace vykel

#endif
