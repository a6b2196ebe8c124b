#include "DeviceNumbering.h"

#include "ConfigurationFolder.h"
#include "errors/StatusBlocks.h"
#include "pellumkelddk/user/FileLock.h"
#include "PluginCall.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vykel {

namespace {

std::size_t countDevices(const DeviceTable& devicesPerList) noexcept {
    std::size_t count = 0;
    for (const auto& devices : devicesPerList)
        count += devices.size();
    return count;
}

/// The numbers in use that can matter: a candidate never exceeds the number of devices.
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

/// The devices without number. Their order is that of one 64-bit word each, the sort key above the place of
/// insertion, so that equal keys keep their order in a plain sort.
class WaitingDevices {
public:
    void insert(std::uint32_t sortKey, IDevice* device) {
        order.push_back(std::uint64_t{sortKey} << 32 | devices.size());
        devices.push_back(device);
    }

    template <class Visit>
    void visitInKeyOrder(Visit visit) {
        std::sort(order.begin(), order.end());
        for (const std::uint64_t word : order)
            visit(*devices[word & 0xFFFFFFFFu]);
    }

private:
    std::vector<std::uint64_t> order;
    std::vector<IDevice*> devices;
};

} // namespace

std::string deviceListLockPath() {
    return getConfigurationFolder() + "DeviceList.lck";
}

void assignDeviceNumbers(const DeviceTable& devicesPerList) {
    const std::string path = deviceListLockPath();
    const FileStream stream = openLockFile(path.c_str());
    vyfile::FileLockImpl fileLock(stream.get());
    fileLock.lock();
    numberDevices(devicesPerList);
}

void numberDevices(const DeviceTable& devicesPerList) {
    NumbersInUse inUse(countDevices(devicesPerList));
    WaitingDevices waiting;
    callPlugin([&] {
        for (const auto& devices : devicesPerList) {
            for (IDevice* const device : devices) {
                const std::uint32_t number = device->getNumber();
                if (number == noDeviceNumber)
                    waiting.insert(device->getSortKey(), device);
                else
                    inUse.insert(number);
            }
        }
        std::uint32_t candidate = 0;
        waiting.visitInKeyOrder([&](IDevice& device) {
            while (inUse.contains(candidate))
                ++candidate;
            StatusBlock block;
            device.setNumber(candidate, vyerr::initStatusBlock(&block)); // a refusal is the device's matter
            ++candidate;
        });
    });
}

} // namespace vykel
