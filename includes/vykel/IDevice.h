#ifndef VYKEL_IDEVICE_H
#define VYKEL_IDEVICE_H

#include "vykel/StatusBlock.h"
#include <cstdint>

namespace vykel {

/// What IDevice::getNumber returns while the device has no number yet.
constexpr std::uint32_t noDeviceNumber = 0xFFFFFFFFu;

/// One device, implemented by a plug-in. The order of the operations is a binary contract: nine slots, no
/// data, no base class.
///
/// A device belongs to the IDeviceList that returned it and stays valid until that list is refreshed again or
/// released; only its list ends its life. Texts are UTF-8, NUL-terminated, owned by the device, and valid
/// until the next call on the same device. No operation may let an exception out. The library calls a device
/// on the thread that refreshes the list and never from two threads at once; a client that shares a list
/// between threads must serialise them itself.
class IDevice {
public:
    /// The interface version of this device; getDevice refuses a device below the caller's minimum version.
    virtual std::int32_t getVersion() = 0;

    /// A text that names this device for good, across restarts and reconnects. `format` is 1 or 2 (two
    /// generations of the token's form). Never null.
    virtual const char* getPersistentToken(std::uint32_t format) = 0;

    /// Orders the devices that have no number yet: lower keys are numbered first.
    virtual std::uint32_t getSortKey() = 0;

    /// Gives the device its machine-wide number, which the plug-in must keep for good. Called while the lock
    /// on the device numbers is held, so keep it short and call no function of the library. The library
    /// ignores the code in `status`: it offers a device that did not keep the number one again at the next
    /// refresh.
    virtual void setNumber(std::uint32_t number, StatusBlock* status) = 0;

    /// The device's number as last set by any process, or noDeviceNumber. Must be read afresh: another
    /// process may have set it since.
    virtual std::uint32_t getNumber() = 0;

    /// A reserved slot. Never called; leave it as it is.
    virtual void reserved1() {}
    /// A reserved slot. Never called; leave it as it is.
    virtual void reserved2() {}

    /// The device's alias: null when the device takes no alias, an empty text when it has none yet.
    virtual const char* getAlias() = 0;

    /// Gives the device an alias, which the plug-in must keep for good. The library always passes 1 and 0
    /// for the two integers. A negative code in `status` refuses the alias and fails the caller's refresh.
    virtual void setAlias(const char* alias, std::int32_t one, std::int32_t zero, StatusBlock* status) = 0;

protected:
    ~IDevice() = default; // only its list ends a device; not a slot
};

static_assert(sizeof(IDevice) == sizeof(void*), "IDevice holds nothing but its table of operations");

} // namespace vykel

#endif
