#ifndef VYKELDEV_ALIASES_PREVIEWDEVICES_H
#define VYKELDEV_ALIASES_PREVIEWDEVICES_H

#include "DeviceListPtr.h"
#include "DeviceTable.h"
#include "PellumKelPluginManager.h"
#include <deque>
#include <vector>

namespace vykeldev::aliases {

/// A device as the next refresh finds it. Asks the plug-in's device, and tells it nothing: an alias is
/// swallowed, a number kept here alone.
class PreviewDevice final : public vykel::IDevice {
public:
    explicit PreviewDevice(vykel::IDevice& device) : real(device) {}

    std::int32_t getVersion() override { return real.getVersion(); }
    const char* getPersistentToken(std::uint32_t format) override { return real.getPersistentToken(format); }
    std::uint32_t getSortKey() override { return real.getSortKey(); }
    void setNumber(std::uint32_t value, vykel::StatusBlock*) override { given = value; }
    std::uint32_t getNumber() override {
        const std::uint32_t number = real.getNumber();
        return number != vykel::noDeviceNumber ? number : given;
    }
    const char* getAlias() override { return real.getAlias(); }
    void setAlias(const char*, std::int32_t, std::int32_t, vykel::StatusBlock*) override {}

private:
    vykel::IDevice& real;
    std::uint32_t given = vykel::noDeviceNumber;
};

/// All devices of this machine, with the numbers that the next refresh gives the new ones. The plug-ins stay
/// loaded, in this process, while this object lives. One thread.
class PreviewDevices {
public:
    /// Loads the plug-ins and refreshes their lists. Throws vyerr::Exception when the plug-ins' key cannot be
    /// read, std::bad_alloc, and what a plug-in threw; plug-ins and lists that fail are left out.
    PreviewDevices();

    /// Valid as long as this object.
    const vykel::DeviceTable& table() const noexcept { return devicesPerList; }

private:
    struct LoadedPlugins {
        LoadedPlugins() { manager.loadAll(); }
        ~LoadedPlugins() { manager.unloadAll(); }
        LoadedPlugins(const LoadedPlugins&) = delete;
        LoadedPlugins& operator=(const LoadedPlugins&) = delete;

        vykel::PellumKelPluginManager manager;
    };

    LoadedPlugins plugins; // unloaded after their lists are released
    std::vector<vykel::DeviceListPtr> lists;
    std::deque<PreviewDevice> devices;
    vykel::DeviceTable devicesPerList;
};

} // namespace vykeldev::aliases

#endif
