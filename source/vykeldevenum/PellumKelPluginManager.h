#ifndef VYKELDEVENUM_PELLUMKELPLUGINMANAGER_H
#define VYKELDEVENUM_PELLUMKELPLUGINMANAGER_H

#include "IPellumKelPluginManager.h"
#include "PellumKelPlugin.h"
#include "vytpl/NonCopyable.h"
#include <memory>
#include <vector>

namespace vykel {

/// Owns the registered enumerator plug-ins that could be loaded and initialised. Used under the global lock.
class PellumKelPluginManager final : public IPellumKelPluginManager, private vytpl::NonCopyableT<void> {
public:
    PellumKelPluginManager() = default;

    /// Loads every registered plug-in in registry order. One that fails is left out and not reported. Throws
    /// ResourceNotFound when the plug-ins' key is missing or cannot be read, and std::bad_alloc.
    void loadAll();

    /// Finalises and unloads every plug-in, then destroys them all.
    void unloadAll() noexcept;

    void getDeviceLists(std::vector<DeviceListPtr>& lists) override;

private:
    std::vector<std::unique_ptr<PellumKelPlugin>> plugins;
};

} // namespace vykel

#endif
