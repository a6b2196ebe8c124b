#include "DeviceLists.h"

#include "errors/StatusBlocks.h"

namespace vykel {

std::int32_t collectDevices(IDeviceList& list, std::vector<IDevice*>& devices) {
    return callPlugin([&] {
        StatusBlock block;
        vyerr::initStatusBlock(&block);
        devices.clear();
        list.refresh(&block);
        if (block.code < 0)
            return block.code;
        const std::uint32_t count = list.getCount();
        for (std::uint32_t i = 0; i < count; ++i) {
            IDevice* const device = list.getDevice(i, 0, &block);
            // One block for the whole list: the first failure leaves out all later devices, too.
            if (block.code >= 0 && device != nullptr)
                devices.push_back(device);
        }
        return block.code;
    });
}

} // namespace vykel
