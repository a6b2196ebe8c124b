#include "commands/DeviceChanges.h"

#include <cstddef>
#include <string_view>
#include <unordered_map>

namespace vykeldev {
namespace {

/// Pairs each device with the device of the other reading that is the same one, or with nullptr.
std::vector<const DeviceState*> findCounterparts(const std::vector<DeviceState>& devices,
                                                 const std::vector<DeviceState>& others) {
    struct SameToken {
        std::vector<const DeviceState*> devices;
        std::size_t next = 0;
    };
    std::unordered_map<std::string_view, SameToken> byToken;
    for (const DeviceState& other : others)
        byToken[other.token].devices.push_back(&other);
    std::vector<const DeviceState*> counterparts;
    for (const DeviceState& device : devices) {
        SameToken& same = byToken[device.token];
        counterparts.push_back(same.next < same.devices.size() ? same.devices[same.next++] : nullptr);
    }
    return counterparts;
}

} // namespace

std::vector<DeviceChange> compareStates(const std::vector<DeviceState>& before,
                                        const std::vector<DeviceState>& now) {
    using Kind = DeviceChange::Kind;
    std::vector<DeviceChange> changes;
    const std::vector<const DeviceState*> successors = findCounterparts(before, now);
    for (std::size_t i = 0; i < before.size(); ++i)
        if (successors[i] == nullptr)
            changes.push_back({Kind::Removed, before[i], before[i]});
    const std::vector<const DeviceState*> predecessors = findCounterparts(now, before);
    for (std::size_t i = 0; i < now.size(); ++i) {
        const DeviceState* const old = predecessors[i];
        if (old == nullptr) {
            changes.push_back({Kind::Added, now[i], now[i]});
            continue;
        }
        if (old->number != now[i].number)
            changes.push_back({Kind::Renumbered, *old, now[i]});
        if (old->alias != now[i].alias)
            changes.push_back({Kind::Renamed, *old, now[i]});
    }
    return changes;
}

} // namespace vykeldev
