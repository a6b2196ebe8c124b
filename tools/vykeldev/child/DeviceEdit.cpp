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

/// Calls a device's function that sets something, and reads the device again. Throws Failure, also when the
/// device now is not what `isKept` expects.
template <class Set, class IsKept>
DeviceInfo change(vykel::IDeviceList& list, const DeviceInfo& device, const std::string& what, Set set,
                  IsKept isKept) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    if (vykel::IDevice* const object = list.getDevice(device.index, 0, &status))
        set(*object, &status);
    if (status.code < 0)
        throw statusFailure(what, status);
    DeviceInfo now = readDevices(list).at(device.index);
    if (!isKept(now))
        throw Failure(what + " did not work", "The plug-in did not keep what it was given.",
                      "See the plug-in's documentation, or run 'vykeldev check PLUGIN'.");
    return now;
}

DeviceInfo renumbered(vykel::IDeviceList& list, const DeviceInfo& device, std::uint32_t number) {
    return change(
        list, device, "giving '" + device.token + "' the number " + numberText(number),
        [=](auto& object, auto* status) { object.setNumber(number, status); },
        [=](const DeviceInfo& now) { return now.number == number; });
}

DeviceInfo renamed(vykel::IDeviceList& list, const DeviceInfo& device, const std::string& alias) {
    if (!device.alias)
        throw Failure("the device '" + device.token + "' takes no alias", "", "");
    return change(
        list, device, "giving '" + device.token + "' an alias",
        [&](auto& object, auto* status) { object.setAlias(alias.c_str(), 1, 0, status); },
        [&](const DeviceInfo& now) { return now.alias == alias; });
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
    const std::string path = vykel::getConfigurationFolder() + "DeviceList.lck";
    const vykel::FileStream lock = vykel::openLockFile(path.c_str());
    lockOrThrow(lock.get(), path);
    std::set<std::optional<std::uint32_t>> inUse;
    std::vector<DeviceInfo> devices;
    for (const DeviceInfo& device : readDevices(list)) {
        inUse.insert(device.number);
        if (device.number == edit.number)
            devices.push_back(device);
    }
    const auto named = std::find_if(devices.begin(), devices.end(), [&](const auto& device) {
        return edit.token.empty() || device.token == edit.token || printable(device.token) == edit.token;
    });
    if (named == devices.end())
        return;
    if (edit.alias && edit.token.empty() && devices.size() > 1)
        throw Failure(
            concat(devices.size(), " devices have the number ", numberText(edit.number)), "",
            "Name one of them with --token, or give each a number of its own with 'vykeldev renumber'.");
    expectDifferent(devices);
    if (edit.alias)
        return onChange({named->alias == edit.alias ? ChangeKind::Kept : ChangeKind::Renamed, *named,
                         renamed(list, *named, *edit.alias)});
    for (const DeviceInfo& device : devices) {
        DeviceChange change{ChangeKind::Kept, device, device};
        if (&device != &*named) {
            std::uint32_t free = 0;
            while (!inUse.insert(free).second)
                ++free;
            change.kind = ChangeKind::Renumbered;
            change.now.number = free;
            if (!edit.dryRun)
                change.now = renumbered(list, device, free);
        }
        onChange(change);
    }
}

} // namespace vykeldev
