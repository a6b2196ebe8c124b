#ifndef VYKELDEVENUM_DEVICENUMBERING_H
#define VYKELDEVENUM_DEVICENUMBERING_H

#include "DeviceTable.h"
#include <string>

namespace vykel {

/// The file whose lock serialises the numbering of devices on this machine. Throws ResourceNotFound or
/// MemoryFull when its folder cannot be found.
std::string deviceListLockPath();

/// Gives a machine-wide number to every device that has none, under the lock on the file above: the lowest
/// free numbers, in the order of the devices' sort keys (equal keys in table order). Waits without limit for
/// other processes. A device that refuses its number is not reported. Throws ResourceNotFound (no data
/// folder), ConfigurationFault (no lock file), OsFault (no lock), MemoryFull, or what a plug-in threw;
/// numbers already given stay given.
void assignDeviceNumbers(const DeviceTable& devicesPerList);

/// The numbering itself; the caller holds the lock. Costs one sort of the devices without number.
void numberDevices(const DeviceTable& devicesPerList);

} // namespace vykel

#endif
