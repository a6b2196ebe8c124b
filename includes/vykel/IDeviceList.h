#ifndef VYKEL_IDEVICELIST_H
#define VYKEL_IDEVICELIST_H

#include "vykel/IDevice.h"
#include "vykel/StatusBlock.h"
#include <cstdint>

namespace vykel {

/// A refreshable list of devices. Plug-ins implement it for the devices that they can see; the library
/// implements it for clients and joins all plug-ins' lists. The order of the operations is a binary contract:
/// eight slots and the destructor, no data, no base class.
///
/// The holder of a list owns it and ends it with release(), never with delete. getCount and getDevice report
/// the state after the last refresh. A plug-in must let no exception out of any operation; if one does,
/// the library's isStale, getDevice and detach pass it on, and its other operations let none out. One list
/// must not be used by two threads at once; different lists may. A status argument is never null.
class IDeviceList {
public:
    /// The version of this interface; 0 for the library's lists. The library never asks a plug-in's list.
    virtual std::int32_t getVersion() = 0;

    /// True when the list asks to be refreshed: something may have changed since its last refresh. Called
    /// often; must be cheap. The library's list is stale until its first successful refresh, after a failed
    /// one, and whenever a plug-in's list is.
    virtual bool isStale() = 0;

    /// Brings the list up to date; devices handed out before become invalid. The library's list does nothing
    /// when `status` already holds an error; it leaves out the devices of a plug-in whose refresh fails, and
    /// reports only these failures: ConfigurationFault (a lock file cannot be made, or the legacy alias file
    /// is malformed or cannot be saved), ResourceNotFound (no shared data folder), OsFault (the lock cannot
    /// be taken), MemoryFull, the negative code of a device that refused a legacy alias, and the code of an
    /// exception that a plug-in let out.
    /// Waits without limit for other processes that number devices or move aliases at the same time.
    virtual void refresh(StatusBlock* status) = 0;

    /// Number of devices after the last refresh; 0 before the first.
    virtual std::uint32_t getCount() = 0;

    /// The device at a zero-based index. Null with InvalidParameter when the index is not below getCount,
    /// null with VersionMismatch when the device's version is below `minimumVersion`; 0 accepts every device.
    /// A plug-in's list must return a device whenever it leaves `status` without an error.
    virtual IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion, StatusBlock* status) = 0;

    /// Ends the list's life and frees it. Every list must be released before the last
    /// vykeldevenum_finalize.
    virtual void release() = 0;

    /// Passes an opaque token on to every plug-in's list. When one refuses, withdraws the token from the
    /// lists that took it before, and reports the code of the refusal.
    virtual void attach(std::uint64_t token, StatusBlock* status) = 0;

    /// Withdraws a token from every plug-in's list, from the first to the last. The first plug-in that lets
    /// an exception out keeps the later ones from being told.
    virtual void detach(std::uint64_t token) = 0;

protected:
    virtual ~IDeviceList() = default; // last slot; only release() ends a list
};

static_assert(sizeof(IDeviceList) == sizeof(void*), "IDeviceList holds nothing but its table of operations");

} // namespace vykel

#endif
