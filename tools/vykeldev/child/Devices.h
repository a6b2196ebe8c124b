#ifndef VYKELDEV_CHILD_DEVICES_H
#define VYKELDEV_CHILD_DEVICES_H

#include "output/Json.h"
#include "vykel/IDeviceList.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vykeldev {

/// The answers of a device, copied: its own texts end with the next call. Texts are UTF-8.
struct DeviceInfo {
    std::uint32_t index;
    std::uint32_t number;             ///< vykel::noDeviceNumber: none.
    std::optional<std::string> alias; ///< None: the device takes no alias.
    std::int32_t version;
    std::uint32_t sortKey;
    std::string token; ///< Empty when the device breaks its contract and has none.
};

void to_json(Json& json, const DeviceInfo& device);
void from_json(const Json& json, DeviceInfo& device);

/// Asks all devices of a refreshed list, but for those below a version. Throws Failure when the list does not
/// return a device.
std::vector<DeviceInfo> readDevices(vykel::IDeviceList& list, std::int32_t minVersion,
                                    std::uint32_t tokenFormat);

/// A device's number as text: "KEL7", or "-" for none.
std::string numberText(std::uint32_t number);

/// The number in a text such as "KEL7"; none when no device can have it.
std::optional<std::uint32_t> numberIn(const std::string& text);

/// Why a text names no number, for the user who gave it; empty when it names one.
std::string numberFlaw(const std::string& text);

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
