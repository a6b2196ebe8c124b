#ifndef VYKELDEVENUM_PELLUMKELPLUGINMANAGER_H
#define VYKELDEVENUM_PELLUMKELPLUGINMANAGER_H

#include "IPellumKelPluginManager.h"
#include "PellumKelPlugin.h"
#include "vytpl/NonCopyable.h"
#include <memory>
#include <vector>

namespace vykel {

/// Owns the enumerator plug-ins registered on the machine that loaded and initialised. Used under the
/// library's global lock.
class PellumKelPluginManager final : public IPellumKelPluginManager, private vytpl::NonCopyableT<void> {
public:
    PellumKelPluginManager() = default;

    /// Loads every registered plug-in in registry order and leaves out silently each that fails in any way.
    /// Throws ResourceNotFound when the plug-ins' key is missing or cannot be read, and std::bad_alloc.
    void loadAll();

    /// Finalises and unloads every plug-in, then destroys them all.
    void unloadAll() noexcept;

    void getDeviceLists(std::vector<DeviceListPtr>& lists) override;

private:
    std::vector<std::unique_ptr<PellumKelPlugin>> plugins;
};

} // namespace vykel

#endif
