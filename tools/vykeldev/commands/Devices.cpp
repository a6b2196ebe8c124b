#include "commands/Devices.h"

#include "support/Failure.h"
#include "vykel/StatusCodes.h"

namespace vykeldev {
namespace {

DeviceInfo ask(vykel::IDevice& device, std::uint32_t index, std::uint32_t tokenFormat) {
    DeviceInfo info{index, device.getNumber(), std::nullopt, device.getVersion(), device.getSortKey(), {}};
    if (const char* const alias = device.getAlias())
        info.alias = alias;
    if (const char* const token = device.getPersistentToken(tokenFormat))
        info.token = token;
    return info;
}

} // namespace

std::vector<DeviceInfo> readDevices(vykel::IDeviceList& list, std::int32_t minVersion,
                                    std::uint32_t tokenFormat) {
    std::vector<DeviceInfo> devices;
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        if (vykel::IDevice* const device = list.getDevice(index, minVersion, &status))
            devices.push_back(ask(*device, index, tokenFormat));
        else if (status.code != vykel::toInteger(vykel::StatusCode::VersionMismatch))
            throw statusFailure("getting device " + std::to_string(index), status);
    }
    return devices;
}

std::string numberText(std::uint32_t number) {
    return number == vykel::noDeviceNumber ? "-" : "KEL" + std::to_string(number);
}

} // namespace vykeldev
