#include "child/DeviceEdit.h"

#include "ConfigurationFolder.h"
#include "machine/Locks.h"
#include "output/Failures.h"
#include "pellumkelddk/user/FileLock.h"
#include "system/DisplayText.h"
#include "system/Text.h"
#include <algorithm>
#include <set>

namespace vykeldev {
namespace {

using ChangeKind = DeviceChange::Kind;

vykel::FileStream lockNumbers() {
    const std::string path = vykel::getConfigurationFolder() + "DeviceList.lck";
    vykel::FileStream stream = vykel::openLockFile(path.c_str());
    lockOrThrow(stream.get(), path);
    return stream;
}

bool hasToken(const DeviceInfo& device, const std::string& text) {
    return device.token == text || printable(device.token) == text;
}

/// Calls a device's function that sets something, and reads the device again. Throws Failure.
template <class Set>
DeviceInfo change(vykel::IDeviceList& list, const DeviceInfo& device, const std::string& what, Set set) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    if (vykel::IDevice* const object = list.getDevice(device.index, 0, &status))
        set(*object, &status);
    if (status.code < 0)
        throw statusFailure(what, status);
    return readDevices(list).at(device.index);
}

void expectKept(bool isKept, const std::string& what) {
    if (!isKept)
        throw Failure(what + " did not work", "The plug-in did not keep what it was given.",
                      "See the plug-in's documentation, or run 'vykeldev check PLUGIN'.");
}

DeviceChange renumbered(vykel::IDeviceList& list, const DeviceInfo& device, std::uint32_t number,
                        bool dryRun) {
    DeviceChange result{ChangeKind::Renumbered, device, device};
    result.now.number = number;
    if (dryRun)
        return result;
    const std::string what = "giving '" + device.token + "' the number " + numberText(number);
    result.now =
        change(list, device, what, [=](auto& object, auto* status) { object.setNumber(number, status); });
    expectKept(result.now.number == number, what);
    return result;
}

DeviceChange renamed(vykel::IDeviceList& list, const DeviceInfo& device, const std::string& alias) {
    if (!device.alias)
        throw Failure("the device '" + device.token + "' takes no alias", "", "");
    const std::string what = "giving '" + device.token + "' an alias";
    const auto set = [&](auto& object, auto* status) { object.setAlias(alias.c_str(), 1, 0, status); };
    const DeviceInfo now = change(list, device, what, set);
    expectKept(now.alias == alias, what);
    return {device.alias == alias ? ChangeKind::Kept : ChangeKind::Renamed, device, now};
}

/// Two devices of one token are one device: what one of them is given, the other one has, too.
void expectDifferent(const std::vector<DeviceInfo>& devices) {
    std::set<std::string> tokens;
    for (const DeviceInfo& device : devices)
        if (!tokens.insert(device.token).second)
            throw Failure("several devices have the token '" + device.token + "'",
                          "Most likely one plug-in is registered twice.",
                          "Run 'vykeldev doctor': it names plug-ins that are registered twice.");
}

} // namespace

void editDevices(vykel::IDeviceList& list, const DeviceEdit& edit,
                 const std::function<void(const DeviceChange&)>& onChange) {
    const vykel::FileStream lock = lockNumbers();
    std::set<std::optional<std::uint32_t>> inUse;
    std::vector<DeviceInfo> devices;
    for (const DeviceInfo& device : readDevices(list)) {
        inUse.insert(device.number);
        if (device.number == edit.number)
            devices.push_back(device);
    }
    const auto named = std::find_if(devices.begin(), devices.end(), [&](const auto& device) {
        return edit.token.empty() || hasToken(device, edit.token);
    });
    if (named == devices.end())
        return;
    if (edit.alias && edit.token.empty() && devices.size() > 1)
        throw Failure(
            concat(devices.size(), " devices have the number ", numberText(edit.number)), "",
            "Name one of them with --token, or give each a number of its own with 'vykeldev renumber'.");
    expectDifferent(devices);
    if (edit.alias)
        return onChange(renamed(list, *named, *edit.alias));
    for (const DeviceInfo& device : devices) {
        std::uint32_t free = 0;
        while (inUse.count(free) != 0)
            ++free;
        const bool stays = &device == &*named;
        onChange(stays ? DeviceChange{ChangeKind::Kept, device, device}
                       : renumbered(list, device, free, edit.dryRun));
        if (!stays)
            inUse.insert(free);
    }
}

} // namespace vykeldev
