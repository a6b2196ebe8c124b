#ifndef VYKELDEV_CHECK_SESSION_H
#define VYKELDEV_CHECK_SESSION_H

#include "check/Plugin.h"
#include "check/Trace.h"
#include <string>
#include <vector>

/// Steps that many rules start with. They throw Broken when the plug-in does not come that far; only
/// InitializedPlugin throws Skipped, because other rules are about being initialised.
namespace vykeldev::check {

/// Makes a step in which the plug-in may have a reason to refuse.
template <class Step>
decltype(auto) refusalIsQuestionable(Step&& step) {
    try {
        return step();
    } catch (const Refused& refused) {
        throw Questionable(refused.observed);
    }
}

/// The plug-in, loaded and initialised.
struct InitializedPlugin : Plugin {
    explicit InitializedPlugin(const Subject& subject) : Plugin(subject) {
        mustAccept<Skipped>(initialize(), "vykel_initializePlugin refused with ");
    }
};

inline void refresh(const List& list) {
    const std::int32_t code = list.refresh();
    if (code < 0)
        throw Refused("refresh left the code ", code, list.originOfFailure());
}

/// The device at an index below the count.
inline Device deviceAt(const List& list, std::uint32_t index) {
    const Fetched fetched = list.getDevice(index);
    if (fetched.device && fetched.code >= 0)
        return *fetched.device;
    const std::string place = concat("getDevice(", index, ") of ", list.getCount());
    if (fetched.code < 0)
        throw Refused(place, " left the code ", fetched.code);
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
struct Session {
    explicit Session(const Subject& subject) : plugin(subject), list(plugin.makeList()) { refresh(list); }
    InitializedPlugin plugin;
    List list;
};

} // namespace vykeldev::check

#endif
