#ifndef VYKEL_VYKELDEVENUM_H
#define VYKEL_VYKELDEVENUM_H

#include "vykel/IDeviceList.h"
#include "vykel/StatusCodes.h"
#include <cstdint>

/// \file
/// The three exports of vykeldevenum.dll. Any thread may call any of them at any time; they run one at a
/// time. No exception leaves them.
extern "C" {

/// The first call loads every registered plug-in; later calls only add to a count. Match each success with
/// one vykeldevenum_finalize. A plug-in that fails in any way is left out without an error. Returns 0;
/// ResourceNotFound when the plug-ins' registry key is missing or unreadable; MemoryFull; GeneralFault. After
/// an error nothing is initialised and the next call tries again.
std::int32_t vykeldevenum_initialize();

/// Makes a new list over all loaded plug-ins and stores it in `*list`, which is written only on success. The
/// caller owns it and ends it with release(), before the last vykeldevenum_finalize. The new list is empty
/// until its first refresh. `version` must be 0.
/// Returns 0; GeneralFault when the library is not initialised; VersionMismatch when `version` is not 0;
/// InvalidParameter when `list` is null; ResourceNotFound when the shared data folder cannot be found;
/// MemoryFull.
std::int32_t vykeldevenum_getAllKelDevices(std::int32_t version, vykel::IDeviceList** list);

/// Undoes one vykeldevenum_initialize; the last one finalises and unloads every plug-in.
/// Returns 0, or GeneralFault when the library is not initialised.
std::int32_t vykeldevenum_finalize();

} // extern "C"

namespace vykel {

// For programs that load the DLL at run time: the types to which they cast what GetProcAddress returns.

/// A pointer to vykeldevenum_initialize.
using InitializeFunction = decltype(&vykeldevenum_initialize);
/// A pointer to vykeldevenum_getAllKelDevices.
using GetAllKelDevicesFunction = decltype(&vykeldevenum_getAllKelDevices);
/// A pointer to vykeldevenum_finalize.
using FinalizeFunction = decltype(&vykeldevenum_finalize);

} // namespace vykel

#endif
