#ifndef VYKELDEV_CHECK_SESSION_H
#define VYKELDEV_CHECK_SESSION_H

#include "check/Plugin.h"
#include "check/Trace.h"
#include "output/Failures.h"
#include <string>
#include <vector>

/// Steps that many rules start with. They throw Broken when the plug-in does not come that far; only
/// InitializedPlugin throws Skipped, because other rules are about being initialised.
namespace vykeldev::check {

/// The plug-in, loaded and initialised.
struct InitializedPlugin : Plugin {
    explicit InitializedPlugin(const Subject& subject) : Plugin(subject) { initialize<Skipped>(); }
};

/// Throws a Refusal when the plug-in refuses, after a second try with a block that has room for what the
/// plug-in says beside its code.
template <class Refusal = Broken>
void refresh(const List& list) {
    const std::int32_t code = list.refresh();
    if (code >= 0)
        return;
    vykel::StatusBlock block = vykel::makeStatusBlock();
    list.call("refresh", &List::Interface::refresh, &block);
    throw Refusal("refresh left the code ", code, originText(block));
}

/// The device at an index below the count.
inline Device deviceAt(const List& list, std::uint32_t index) {
    const auto [device, code] = list.getDevice(index);
    if (device && code >= 0)
        return *device;
    const std::string place = concat("getDevice(", index, ") of ", list.getCount());
    mustAccept<Broken>(code, place, " left the code ");
    throw Broken(place, " answered null and left no error");
}

/// Calls `look` with each device of a list and its index: with all when the time suffices, and with the first
/// ten in any case.
template <class Look>
void lookAtDevices(const List& list, Look look) {
    repeat(list.getCount(), *list.trace, 4, 10, [&](std::uint32_t i) { look(deviceAt(list, i), i); });
}

inline std::vector<Device> devicesOf(const List& list) {
    std::vector<Device> devices;
    lookAtDevices(list, [&devices](const Device& device, std::uint32_t) { devices.push_back(device); });
    return devices;
}

/// A plug-in with one list, refreshed.
struct Session : InitializedPlugin {
    explicit Session(const Subject& subject) : InitializedPlugin(subject), list(makeList()) { refresh(list); }
    const List list;
};

} // namespace vykeldev::check

#endif
