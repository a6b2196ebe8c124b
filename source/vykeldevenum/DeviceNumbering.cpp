#include "DeviceNumbering.h"

#include "ConfigurationFolder.h"
#include "errors/StatusBlocks.h"
#include "pellumkelddk/user/FileLock.h"
#include "PluginCall.h"
#include "vyfile/internal/FileLockImpl.h"
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <xmmintrin.h>

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

/// The devices without number, to be visited by ascending sort key, equal keys in the order of insertion: a
/// radix sort, one byte of the key at a time, which keeps the cost per device the same at any number of them.
class WaitingDevices {
public:
    void insert(std::uint32_t sortKey, IDevice* device) { waiting.push_back({sortKey, device}); }

    template <class Visit>
    void visitInKeyOrder(Visit visit) {
        sortByKey();
        for (std::size_t i = 0; i < waiting.size(); ++i) {
            // In key order the devices lie anywhere in memory: without this, each one is waited for in turn.
            constexpr std::size_t distance = 12;
            const std::size_t ahead = std::min(i + distance, waiting.size() - 1);
            _mm_prefetch(reinterpret_cast<const char*>(waiting[ahead].device), _MM_HINT_T0);
            visit(*waiting[i].device);
        }
    }

private:
    struct Waiting {
        std::uint32_t sortKey;
        IDevice* device;

        std::size_t digit(unsigned byte) const noexcept { return sortKey >> 8 * byte & 0xFF; }
    };
    using Counts = std::array<std::size_t, 256>;

    void sortByKey() {
        if (std::is_sorted(waiting.begin(), waiting.end(),
                           [](const Waiting& a, const Waiting& b) { return a.sortKey < b.sortKey; }))
            return;
        std::array<Counts, sizeof(std::uint32_t)> counts = {};
        for (const Waiting& entry : waiting)
            for (unsigned byte = 0; byte < counts.size(); ++byte)
                ++counts[byte][entry.digit(byte)];
        std::vector<Waiting> sorted(waiting.size());
        for (unsigned byte = 0; byte < counts.size(); ++byte)
            distribute(byte, counts[byte], sorted);
    }

    /// One stable pass; `counts` tells how often each digit occurs.
    void distribute(unsigned byte, Counts& counts, std::vector<Waiting>& sorted) {
        if (counts[waiting.front().digit(byte)] == waiting.size())
            return; // this byte is the same in all keys
        std::size_t start = 0;
        for (std::size_t& count : counts)
            start += std::exchange(count, start);
        for (const Waiting& entry : waiting)
            sorted[counts[entry.digit(byte)]++] = entry;
        waiting.swap(sorted);
    }

    std::vector<Waiting> waiting;
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
