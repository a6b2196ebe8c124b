#ifndef VYKELDEVENUM_DEVICETABLE_H
#define VYKELDEVENUM_DEVICETABLE_H

#include "vykel/IDevice.h"
#include <vector>

namespace vykel {

/// The devices of every plug-in list as of its last refresh, borrowed. One vector per list, in the order of
/// the lists; each in its list's own order. No entry is null.
using DeviceTable = std::vector<std::vector<IDevice*>>;

} // namespace vykel

#endif
