#ifndef VYKELDEVENUM_DEVICENUMBERING_H
#define VYKELDEVENUM_DEVICENUMBERING_H

#include "DeviceLists.h"
#include <string>

namespace vykel {

/// The path of the file whose lock serialises the numbering on the machine, in UTF-8. Throws ResourceNotFound
/// when the system names no common data folder, and MemoryFull.
std::string deviceListLockPath();

/// Gives a machine-wide number to every device that has none: the lowest free numbers, in the order of the
/// devices' sort keys (equal keys in table order). Meanwhile it holds the lock on the file at
/// deviceListLockPath, for which it waits without limit. A device that refuses its number is not reported.
/// Throws ResourceNotFound (no data folder), ConfigurationFault (no lock file), OsFault (no lock),
/// MemoryFull, or what a plug-in threw; numbers already given stay given.
void assignDeviceNumbers(const DeviceTable& devicesPerList);

/// The numbering itself, without the lock, which the caller holds. Costs one sort of the devices without a
/// number. Throws MemoryFull or what a plug-in threw.
void numberDevices(const DeviceTable& devicesPerList);

} // namespace vykel

#endif
