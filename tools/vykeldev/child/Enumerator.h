#ifndef VYKELDEV_CHILD_ENUMERATOR_H
#define VYKELDEV_CHILD_ENUMERATOR_H

#include "DeviceLists.h"
#include "vybase/owners.h"
#include "vykel/vykeldevenum.h"
#include <string>
#include <windows.h>

namespace vykeldev {

/// The path of the library beside this tool. Throws Failure when the system does not say where that is.
std::string defaultLibraryPath();

/// The device-enumeration library, loaded and initialised while this object lives. Lists must end before it.
class Enumerator {
public:
    /// Loads the library at a path and initialises it. Throws Failure.
    explicit Enumerator(const std::string& library);
    ~Enumerator();
    Enumerator(const Enumerator&) = delete;
    Enumerator& operator=(const Enumerator&) = delete;

    /// A new list of all devices, empty until it is refreshed. Throws Failure.
    vykel::DeviceListPtr makeList() const;

private:
    template <class Function>
    Function* resolve(const char* name) const;

    std::string path;
    vybase::Module module;
    decltype(vykeldevenum_getAllKelDevices)* getAllKelDevices = nullptr;
    decltype(vykeldevenum_finalize)* finalize = nullptr;
};

} // namespace vykeldev

#endif
