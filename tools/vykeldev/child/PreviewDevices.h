#ifndef VYKELDEV_CHILD_PREVIEWDEVICES_H
#define VYKELDEV_CHILD_PREVIEWDEVICES_H

#include "DeviceLists.h"
#include "vytpl/NonCopyable.h"
#include <deque>
#include <optional>
#include <string>

namespace vykeldev {

/// A device as the next refresh finds it. It asks the plug-in's device and never changes it: it keeps the
/// number and the alias that it is given to itself. It reports an empty alias, so that the transfer always
/// offers it one.
class PreviewDevice final : public vykel::IDevice {
public:
    explicit PreviewDevice(vykel::IDevice& device) : real(device) {}

    std::int32_t getVersion() override { return real.getVersion(); }
    const char* getPersistentToken(std::uint32_t format) override { return real.getPersistentToken(format); }
    std::uint32_t getSortKey() override { return real.getSortKey(); }
    void setNumber(std::uint32_t value, vykel::StatusBlock*) override { number = value; }
    std::uint32_t getNumber() override {
        const std::uint32_t current = real.getNumber();
        if (current != vykel::noDeviceNumber)
            number = current;
        return number;
    }
    const char* getAlias() override {
        const char* const alias = real.getAlias();
        named = alias != nullptr && *alias != '\0';
        return alias != nullptr ? "" : nullptr;
    }
    void setAlias(const char* alias, std::int32_t, std::int32_t, vykel::StatusBlock*) override {
        offered = alias;
    }

    std::uint32_t number = vykel::noDeviceNumber; ///< When it was last asked for.
    bool named = false;                 ///< Whether the plug-in's device has an alias already, and keeps it.
    std::optional<std::string> offered; ///< The alias that a transfer offered; none without one.

private:
    vykel::IDevice& real;
};

/// All devices of this machine, in the order of the plug-ins' lists. One thread.
struct PreviewDevices : private vytpl::NonCopyableT<PreviewDevices> {
    /// Adds a device, which must outlive this object. Throws std::bad_alloc.
    void add(vykel::IDevice& device) { table[0].push_back(&all.emplace_back(device)); }

    std::deque<PreviewDevice> all;
    vykel::DeviceTable table{1}; ///< Refers to them.
};

} // namespace vykeldev

#endif
