#ifndef VYKELDEVENUM_DEVICELISTPTR_H
#define VYKELDEVENUM_DEVICELISTPTR_H

#include "PluginCall.h"
#include "vykel/IDeviceList.h"
#include <memory>

namespace vykel {

/// Ends a list with its own release. Drops what the plug-in throws.
struct ReleaseList {
    void operator()(IDeviceList* list) const noexcept {
        callPluginQuietly([=] { list->release(); });
    }
};

/// An owned list of a plug-in.
using DeviceListPtr = std::unique_ptr<IDeviceList, ReleaseList>;

} // namespace vykel

#endif
