#ifndef VYKELDEV_CHILD_PREVIEWDEVICES_H
#define VYKELDEV_CHILD_PREVIEWDEVICES_H

#include "DeviceLists.h"
#include "PellumKelPluginManager.h"
#include "vytpl/NonCopyable.h"
#include <deque>
#include <optional>
#include <string>
#include <vector>

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

/// The registered plug-ins, loaded in this process while this object lives.
struct LoadedPlugins : private vytpl::NonCopyableT<LoadedPlugins> {
    /// Leaves out plug-ins that fail. Throws vyerr::Exception when the plug-ins' key cannot be read.
    LoadedPlugins() { manager.loadAll(); }
    ~LoadedPlugins() { manager.unloadAll(); }

    vykel::PellumKelPluginManager manager;
};

/// All devices of this machine, with the numbers that the next refresh gives the new ones. One thread.
class PreviewDevices {
public:
    /// Refreshes the plug-ins' lists; those that fail are left out. The plug-ins must outlive this object.
    /// Throws std::bad_alloc, and what a plug-in threw.
    explicit PreviewDevices(vykel::IPellumKelPluginManager& plugins);

    /// Both are valid as long as this object.
    const vykel::DeviceTable& table() const noexcept { return devicesPerList; }
    const std::deque<PreviewDevice>& all() const noexcept { return devices; }

private:
    std::vector<vykel::DeviceListPtr> lists;
    std::deque<PreviewDevice> devices;
    vykel::DeviceTable devicesPerList;
};

} // namespace vykeldev

#endif
