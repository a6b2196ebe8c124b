#include "child/PreviewDevices.h"

#include "DeviceLists.h"
#include "DeviceNumbering.h"

namespace vykeldev {

PreviewDevices::PreviewDevices(vykel::IPellumKelPluginManager& plugins) {
    plugins.getDeviceLists(lists);
    for (const auto& list : lists) {
        std::vector<vykel::IDevice*> found;
        vykel::collectDevices(*list, found);
        for (vykel::IDevice*& device : found)
            device = &devices.emplace_back(*device);
        devicesPerList.push_back(std::move(found));
    }
    vykel::numberDevices(devicesPerList); // needs no lock: the plug-ins never see these numbers
}

} // namespace vykeldev
