#include "child/Devices.h"

#include "output/Failures.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <charconv>
#include <queue>
#include <string_view>
#include <unordered_map>

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

void to_json(Json& json, const DeviceInfo& device) {
    json = {{"index", device.index},         {"number", numberOrNull(device.number)},
            {"alias", orNull(device.alias)}, {"version", device.version},
            {"sortKey", device.sortKey},     {"token", device.token}};
}

void from_json(const Json& json, DeviceInfo& device) {
    const Json& number = json.at("number");
    const Json& alias = json.at("alias");
    json.at("index").get_to(device.index);
    device.number = number.is_null() ? vykel::noDeviceNumber : number.get<std::uint32_t>();
    device.alias = alias.is_null() ? std::nullopt : std::optional(alias.get<std::string>());
    json.at("version").get_to(device.version);
    json.at("sortKey").get_to(device.sortKey);
    json.at("token").get_to(device.token);
}

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

std::optional<std::uint32_t> numberIn(const std::string& text) {
    std::uint32_t number = 0;
    std::from_chars(text.data() + std::min<std::size_t>(3, text.size()), text.data() + text.size(), number);
    const bool isWhole = number != vykel::noDeviceNumber && numberText(number) == text;
    return isWhole ? std::optional(number) : std::nullopt;
}

std::string numberFlaw(const std::string& text) {
    return numberIn(text) ? "" : "a number such as KEL3 expected, not '" + text + "'";
}

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
