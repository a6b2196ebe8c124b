#include "child/Devices.h"

#include "output/Failures.h"
#include "system/ToolCommand.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <charconv>
#include <map>
#include <queue>
#include <string_view>
#include <unordered_map>

namespace vykeldev {
namespace {

/// The path of the library that an address is in, if it is in one.
std::optional<std::string> libraryAt(const void* address) {
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE library = nullptr;
    return GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &library)
               ? std::optional(modulePath(library))
               : std::nullopt;
}

DeviceInfo ask(vykel::IDevice& device, std::uint32_t index, std::uint32_t tokenFormat) {
    DeviceInfo info;
    info.index = index;
    if (const std::uint32_t number = device.getNumber(); number != vykel::noDeviceNumber)
        info.number = number;
    if (const char* const alias = device.getAlias())
        info.alias = alias;
    info.version = device.getVersion();
    info.sortKey = device.getSortKey();
    if (const char* const token = device.getPersistentToken(tokenFormat))
        info.token = token;
    return info;
}

bool isWanted(const DeviceInfo& device, const Selection& selection) {
    return (!selection.number || numberText(device.number) == *selection.number) &&
           (!selection.alias || device.alias == selection.alias) &&
           (!selection.token || device.token == *selection.token);
}

} // namespace

std::vector<DeviceInfo> readDevices(vykel::IDeviceList& list, const Selection& selection) {
    std::vector<DeviceInfo> devices;
    std::map<const void*, std::optional<std::string>>
        libraries; // by a device's table of functions: there are few
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        if (vykel::IDevice* const device = list.getDevice(index, selection.minVersion, &status)) {
            DeviceInfo info = ask(*device, index, selection.tokenFormat);
            const void* const table = *reinterpret_cast<const void* const*>(device);
            const auto [library, isNew] = libraries.try_emplace(table);
            if (isNew)
                library->second = libraryAt(table);
            info.plugin = library->second;
            if (isWanted(info, selection))
                devices.push_back(std::move(info));
        } else if (status.code != vykel::toInteger(vykel::StatusCode::VersionMismatch))
            throw statusFailure("getting device " + std::to_string(index), status);
    }
    return devices;
}

std::string numberText(std::optional<std::uint32_t> number) {
    return number ? "KEL" + std::to_string(*number) : "-";
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
