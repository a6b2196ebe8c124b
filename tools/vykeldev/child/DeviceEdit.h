#ifndef VYKELDEV_CHILD_DEVICEEDIT_H
#define VYKELDEV_CHILD_DEVICEEDIT_H

#include "child/Devices.h"
#include <functional>
#include <optional>
#include <string>

namespace vykeldev {

/// What `renumber` and `alias` change. Texts are UTF-8.
struct DeviceEdit {
    std::uint32_t number = 0;         ///< Of the devices that it is about.
    std::string token;                ///< Of the one among them that is meant; empty: none is named.
    std::optional<std::string> alias; ///< For the device; none: the devices get numbers of their own.
    bool dryRun = false;              ///< Only reports what it would do.

    static constexpr std::tuple members{
        member("number", &DeviceEdit::number), member("token", &DeviceEdit::token),
        member("alias", &DeviceEdit::alias), member("dryRun", &DeviceEdit::dryRun)};
};

/// Edits the devices of a refreshed list, under the lock that every refresh numbers devices under. Reports
/// each device of that number, each change at once; none when no device is meant. Throws Failure.
void editDevices(vykel::IDeviceList& list, const DeviceEdit& edit,
                 const std::function<void(const DeviceChange&)>& onChange);

} // namespace vykeldev

#endif
