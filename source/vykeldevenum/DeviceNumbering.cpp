#include "DeviceNumbering.h"

#include "ConfigurationFolder.h"
#include "errors/StatusBlocks.h"
#include "pellumkelddk/user/FileLock.h"
#include "PluginCall.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vykel {

namespace {

std::size_t countDevices(const DeviceTable& devicesPerList) noexcept {
    std::size_t count = 0;
    for (const auto& devices : devicesPerList)
        count += devices.size();
    return count;
}

/// The numbers in use. It keeps only those below the number of devices: no device is given a higher one.
class NumbersInUse {
public:
    explicit NumbersInUse(std::size_t deviceCount) : used(deviceCount) {}

    void insert(std::uint32_t number) noexcept {
        if (number < used.size())
            used[number] = true;
    }
    bool contains(std::uint32_t number) const noexcept { return number < used.size() && used[number]; }

private:
    std::vector<bool> used;
};

/// A device that waits for a number.
struct Waiting {
    std::uint32_t sortKey;
    IDevice* device;
};

} // namespace

std::string deviceListLockPath() {
    return getConfigurationFolder() + "DeviceList.lck";
}

void assignDeviceNumbers(const DeviceTable& devicesPerList) {
    const FileStream stream = openLockFile(deviceListLockPath().c_str());
    vyfile::FileLockImpl fileLock(stream.get());
    fileLock.lock();
    numberDevices(devicesPerList);
}

void numberDevices(const DeviceTable& devicesPerList) {
    const std::size_t count = countDevices(devicesPerList);
    NumbersInUse inUse(count);
    std::vector<Waiting> waiting;
    waiting.reserve(count);
    callPlugin([&] {
        for (const auto& devices : devicesPerList) {
            for (IDevice* const device : devices) {
                const std::uint32_t number = device->getNumber();
                if (number == noDeviceNumber)
                    waiting.push_back({device->getSortKey(), device});
                else
                    inUse.insert(number);
            }
        }
        std::stable_sort(waiting.begin(), waiting.end(),
                         [](const Waiting& a, const Waiting& b) { return a.sortKey < b.sortKey; });
        std::uint32_t candidate = 0;
        for (const Waiting& each : waiting) {
            while (inUse.contains(candidate))
                ++candidate;
            StatusBlock block; // ignored: a device that refuses is offered a number at the next refresh
            each.device->setNumber(candidate++, vyerr::initStatusBlock(&block));
        }
    });
}

} // namespace vykel
