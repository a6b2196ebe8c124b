#include "child/DeviceChanges.h"

#include <cstddef>
#include <queue>
#include <string_view>
#include <unordered_map>

namespace vykeldev {

std::vector<DeviceChange> findChanges(const std::vector<DeviceInfo>& before,
                                      const std::vector<DeviceInfo>& now) {
    using Kind = DeviceChange::Kind;
    std::unordered_map<std::string_view, std::queue<std::size_t>> indexesOf; // in `before`, by token
    for (std::size_t i = 0; i < before.size(); ++i)
        indexesOf[before[i].token].push(i);
    std::vector<bool> isRemoved(before.size(), true);
    std::vector<DeviceChange> later;
    for (const DeviceInfo& device : now) {
        std::queue<std::size_t>& same = indexesOf[device.token];
        if (same.empty()) {
            later.push_back({Kind::Added, device, device});
            continue;
        }
        const DeviceInfo& old = before[same.front()];
        isRemoved[same.front()] = false;
        same.pop();
        if (old.number != device.number)
            later.push_back({Kind::Renumbered, old, device});
        if (old.alias != device.alias)
            later.push_back({Kind::Renamed, old, device});
    }
    std::vector<DeviceChange> changes;
    for (std::size_t i = 0; i < before.size(); ++i)
        if (isRemoved[i])
            changes.push_back({Kind::Removed, before[i], before[i]});
    changes.insert(changes.end(), later.begin(), later.end());
    return changes;
}

} // namespace vykeldev
