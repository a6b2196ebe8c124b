#ifndef VYKELDEV_COMMANDS_DEVICECHANGES_H
#define VYKELDEV_COMMANDS_DEVICECHANGES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What a list of devices was like at one time, and what changed between two. All texts are UTF-8.
namespace vykeldev {

/// What may change about a device, and what tells it from others.
struct DeviceState {
    std::string token;                ///< Persistent token in format 2.
    std::uint32_t number;             ///< vykel::noDeviceNumber: none.
    std::optional<std::string> alias; ///< None: the device takes none.
};

/// One change of one device. Both states are the same unless it was renumbered or renamed.
struct DeviceChange {
    enum class Kind { Added, Removed, Renumbered, Renamed };
    Kind kind;
    DeviceState before;
    DeviceState now;
};

/// What happened between two readings: first the removed devices in their old order, then all else in the
/// order of the list. A device is the same in both when the token is; of several devices with one token, the
/// first before is the first now, and so on.
std::vector<DeviceChange> compareStates(const std::vector<DeviceState>& before,
                                        const std::vector<DeviceState>& now);

} // namespace vykeldev

#endif
