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
    std::uint32_t index = 0;
    std::optional<std::uint32_t> number; ///< None: it has none yet.
    std::optional<std::string> alias;    ///< None: the device takes no alias.
    std::int32_t version = 0;
    std::uint32_t sortKey = 0;
    std::string token; ///< Empty when the device breaks its contract and has none.
    std::optional<std::string>
        plugin; ///< Path of the library with the device's code; none when it is in none.

    static constexpr std::tuple members{
        member("index", &DeviceInfo::index),     member("number", &DeviceInfo::number),
        member("alias", &DeviceInfo::alias),     member("version", &DeviceInfo::version),
        member("sortKey", &DeviceInfo::sortKey), member("token", &DeviceInfo::token),
        member("plugin", &DeviceInfo::plugin)};
};

/// Which devices are wanted, and in which form.
struct Selection {
    std::int32_t minVersion = 0;
    std::uint32_t tokenFormat = 1;
    std::optional<std::string> number; ///< As text, such as "KEL3". Of these three, none means any.
    std::optional<std::string> alias;
    std::optional<std::string> token;

    static constexpr std::tuple members{
        member("minVersion", &Selection::minVersion), member("tokenFormat", &Selection::tokenFormat),
        member("number", &Selection::number), member("alias", &Selection::alias),
        member("token", &Selection::token)};

    /// Whether it leaves out devices for another reason than their version.
    bool isByName() const noexcept { return number || alias || token; }
};

/// Asks the devices of a refreshed list. Throws Failure when the list does not return a device.
std::vector<DeviceInfo> readDevices(vykel::IDeviceList& list, const Selection& selection = {});

/// A device's number as text: "KEL7", or "-" for none.
std::string numberText(std::optional<std::uint32_t> number);

/// The number in a text such as "KEL7"; none when no device can have it.
std::optional<std::uint32_t> numberIn(const std::string& text);

/// Why a text names no number, for the user who gave it; empty when it names one.
std::string numberFlaw(const std::string& text);

/// One change of one device; or that it was there at first, or that an edit left it as it is. Both states are
/// the same unless it was renumbered or renamed.
struct DeviceChange {
    enum class Kind { Present, Added, Removed, Renumbered, Renamed, Kept };
    Kind kind = Kind::Kept;
    DeviceInfo before;
    DeviceInfo now;

    static constexpr std::tuple members{member("kind", &DeviceChange::kind),
                                        member("before", &DeviceChange::before),
                                        member("now", &DeviceChange::now)};
};

/// The changes between two readings: first the removed devices in their old order, then all other changes in
/// the order of the list. A device is the same in both when the token is; of several devices with one token,
/// the first before is the first now, and so on.
std::vector<DeviceChange> findChanges(const std::vector<DeviceInfo>& before,
                                      const std::vector<DeviceInfo>& now);

} // namespace vykeldev

#endif
