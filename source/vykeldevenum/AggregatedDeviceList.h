#ifndef VYKELDEVENUM_AGGREGATEDDEVICELIST_H
#define VYKELDEVENUM_AGGREGATEDDEVICELIST_H

#include "DeviceLists.h"
#include "IPellumKelPluginManager.h"
#include "TraditionalAliasTransferManager.h"
#include "vykel/IDeviceList.h"
#include "vytpl/NonCopyable.h"
#include <vector>

namespace vykel {

/// The list that clients get: the plug-ins' lists as one flat list. It owns those lists and borrows their
/// devices, as of the last refresh. See IDeviceList for every operation. When a plug-in lets an exception
/// out, refresh and attach report its code, isStale, getDevice and detach pass it on, and release drops it.
class AggregatedDeviceList final : public IDeviceList, private vytpl::NonCopyableT<void> {
public:
    /// Asks the manager for a list of every plug-in; nothing is refreshed yet. Throws ResourceNotFound when
    /// the configuration folder cannot be found, MemoryFull.
    explicit AggregatedDeviceList(IPellumKelPluginManager& manager);

    std::int32_t getVersion() override;
    bool isStale() override;
    void refresh(StatusBlock* status) override;
    std::uint32_t getCount() override;
    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion, StatusBlock* status) override;
    void release() override;
    void attach(std::uint64_t token, StatusBlock* status) override;
    void detach(std::uint64_t token) override;

protected:
    ~AggregatedDeviceList() override;

private:
    void refreshAll();
    bool refreshList(IDeviceList& list, std::vector<IDevice*>& devices) const;
    void attachAll(std::uint64_t token);

    std::vector<DeviceListPtr> deviceLists;
    DeviceTable devicesPerList;
    bool dirty = true; ///< refresh every list next time
    TraditionalAliasTransferManager aliasTransfer;
};

} // namespace vykel

#endif
