#include "AggregatedDeviceList.h"

#include "DeviceLists.h"
#include "DeviceNumbering.h"
#include "errors/CatchLadder.h"
#include "errors/Exception.h"
#include "pellumkelddk/shared/Common.h"
#include "PluginCall.h"
#include "vykel/StatusCodes.h"

namespace vykel {

namespace {

constexpr vyerr::RaiseSite refreshSite{__FILE__, 50};
constexpr vyerr::RaiseSite versionSite{__FILE__, 74};
constexpr vyerr::RaiseSite indexSite{__FILE__, 82};
constexpr vyerr::RaiseSite attachSite{__FILE__, 93};

IDevice* refuse(StatusBlock* status, StatusCode code, vyerr::RaiseSite site) noexcept {
    vyerr::storeError(status, code, site);
    return nullptr;
}

} // namespace

AggregatedDeviceList::AggregatedDeviceList(IPellumKelPluginManager& manager) {
    manager.getDeviceLists(deviceLists);
    devicesPerList.resize(deviceLists.size());
}

AggregatedDeviceList::~AggregatedDeviceList() {
    for (auto& list : deviceLists) // from the first to the last, which a vector does not promise
        list.reset();
}

std::int32_t AggregatedDeviceList::getVersion() {
    return 0;
}

bool AggregatedDeviceList::isStale() {
    if (dirty)
        return true;
    return callPlugin([this] {
        for (const auto& list : deviceLists)
            if (list->isStale())
                return true;
        return false;
    });
}

void AggregatedDeviceList::refresh(StatusBlock* status) {
    if (status->code < 0)
        return;
    vyerr::runGuarded(status, refreshSite, [this] { refreshAll(); });
}

void AggregatedDeviceList::refreshAll() {
    try {
        bool changed = dirty;
        for (std::size_t i = 0; i < deviceLists.size(); ++i)
            if (refreshList(*deviceLists[i], devicesPerList[i]))
                changed = true;
        if (!changed)
            return;
        assignDeviceNumbers(devicesPerList);
        aliasTransfer.transferAliases(devicesPerList);
        dirty = false;
    } catch (...) {
        dirty = true;
        throw;
    }
}

/// Brings one list's snapshot up to date. False when the list is fresh and was not refreshed.
bool AggregatedDeviceList::refreshList(IDeviceList& list, std::vector<IDevice*>& devices) const {
    if (!callPlugin([&] { return list.isStale(); }) && !dirty)
        return false;
    collectDevices(list, devices); // a list that fails has no devices until it refreshes again
    return true;
}

std::uint32_t AggregatedDeviceList::getCount() {
    std::uint32_t count = 0;
    for (const auto& devices : devicesPerList)
        count += toCount32(devices.size());
    return count;
}

IDevice* AggregatedDeviceList::getDevice(std::uint32_t index, std::int32_t minimumVersion,
                                         StatusBlock* status) {
    std::size_t remaining = index;
    for (const auto& devices : devicesPerList) {
        if (remaining >= devices.size()) {
            remaining -= devices.size();
            continue;
        }
        IDevice* const device = devices[remaining];
        if (callPlugin([=] { return device->getVersion(); }) >= minimumVersion)
            return device;
        return refuse(status, StatusCode::VersionMismatch, versionSite);
    }
    return refuse(status, StatusCode::InvalidParameter, indexSite);
}

void AggregatedDeviceList::release() {
    delete this;
}

void AggregatedDeviceList::attach(std::uint64_t token, StatusBlock* status) {
    vyerr::runGuarded(status, attachSite, [=] { attachAll(token); });
}

void AggregatedDeviceList::attachAll(std::uint64_t token) {
    std::size_t attached = 0;
    try {
        for (; attached < deviceLists.size(); ++attached) {
            StatusBlock block;
            vyerr::initStatusBlock(&block);
            callPlugin([&] { deviceLists[attached]->attach(token, &block); });
            vyerr::throwIfFailed(&block);
        }
    } catch (...) {
        for (std::size_t i = 0; i < attached; ++i)
            callPluginQuietly([&] { deviceLists[i]->detach(token); });
        throw;
    }
}

void AggregatedDeviceList::detach(std::uint64_t token) {
    callPlugin([&] {
        for (const auto& list : deviceLists)
            list->detach(token);
    });
}

} // namespace vykel
