#include "vykel/vykeldevenum.h"

#include "AggregatedDeviceList.h"
#include "errors/CatchLadder.h"
#include "PellumKelPluginManager.h"
#include "vyplat/quarks/synchronization.h"
#include <memory>
#include <utility>

namespace {

using vykel::StatusBlock;
using vykel::StatusCode;
using vykel::toInteger;

constexpr vyerr::RaiseSite createLockSite{__FILE__, 23};
constexpr vyerr::RaiseSite createManagerSite{__FILE__, 46};
constexpr vyerr::RaiseSite createListSite{__FILE__, 92};

void createGlobalLock(StatusBlock* status);
void destroyGlobalLock();

// When the library is unloaded, these are destroyed from the last to the first: first the lock, then a
// manager whose client never called vykeldevenum_finalize.
std::unique_ptr<vykel::PellumKelPluginManager> pluginManager; // null whenever initCount is 0
vyplat::CriticalSection* globalLock = nullptr;                // guards initCount and pluginManager
std::uint32_t initCount = 0;
vyplat::OnceInitializer libraryOnce(createGlobalLock, destroyGlobalLock);

void createGlobalLock(StatusBlock* status) {
    vyerr::runGuarded(status, createLockSite, [=] {
        if (globalLock == nullptr) // not null after a set-up that failed
            globalLock = new vyplat::CriticalSection;
        globalLock->initialize(status);
    });
}

void destroyGlobalLock() {
    globalLock->destroy();
    delete globalLock;
    globalLock = nullptr;
}

void createPluginManager(StatusBlock* status) {
    std::unique_ptr<vykel::PellumKelPluginManager> manager;
    vyerr::runGuarded(status, createManagerSite, [&] {
        manager = std::make_unique<vykel::PellumKelPluginManager>();
        manager->unloadAll();
        manager->loadAll();
    });
    if (status->code >= 0)
        pluginManager = std::move(manager);
}

} // namespace

std::int32_t vykeldevenum_initialize() {
    StatusBlock block;
    vyerr::initStatusBlock(&block);
    libraryOnce.run(&block);
    if (block.code < 0)
        return block.code;
    const vyplat::CriticalSectionGuard guard(globalLock);
    if (initCount == 0)
        createPluginManager(&block);
    if (block.code >= 0)
        ++initCount;
    return block.code;
}

std::int32_t vykeldevenum_getAllKelDevices(std::int32_t version, vykel::IDeviceList** list) {
    if (!libraryOnce.isDone())
        return toInteger(StatusCode::GeneralFault);
    if (version != 0)
        return toInteger(StatusCode::VersionMismatch);
    if (list == nullptr)
        return toInteger(StatusCode::InvalidParameter);
    const vyplat::CriticalSectionGuard guard(globalLock);
    if (pluginManager == nullptr)
        return toInteger(StatusCode::GeneralFault);
    StatusBlock block;
    vyerr::initStatusBlock(&block);
    vyerr::runGuarded(&block, createListSite,
                      [=] { *list = new vykel::AggregatedDeviceList(*pluginManager); });
    return block.code;
}

std::int32_t vykeldevenum_finalize() {
    if (!libraryOnce.isDone())
        return toInteger(StatusCode::GeneralFault);
    const vyplat::CriticalSectionGuard guard(globalLock);
    if (initCount == 0)
        return toInteger(StatusCode::GeneralFault);
    if (--initCount == 0) {
        // Taken out first: a plug-in that calls back while it is finalised, which its contract forbids, must
        // not reach a manager that is going.
        const auto manager = std::exchange(pluginManager, nullptr);
        manager->unloadAll();
    }
    return toInteger(StatusCode::Success);
}
