#ifndef VYKELDEVENUM_DEVICENUMBERING_H
#define VYKELDEVENUM_DEVICENUMBERING_H

#include "DeviceLists.h"

namespace vykel {

/// Gives a machine-wide number to every device that has none: the lowest free numbers, in the order of the
/// devices' sort keys (equal keys in table order). Meanwhile it holds the lock on "DeviceList.lck" in the
/// configuration folder, for which it waits without limit. A device that refuses its number is not reported.
/// Throws ResourceNotFound (no data folder), ConfigurationFault (no lock file), OsFault (no lock),
/// MemoryFull, or what a plug-in threw; numbers already given stay given.
void assignDeviceNumbers(const DeviceTable& devicesPerList);

/// The numbering itself, without the lock, which the caller holds. Costs one sort of the devices without a
/// number. Throws MemoryFull or what a plug-in threw.
void numberDevices(const DeviceTable& devicesPerList);

} // namespace vykel

#endif
