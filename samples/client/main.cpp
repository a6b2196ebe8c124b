// A complete client of the library: lists the devices of this machine.

#include "vykel/vykeldevenum.h"
#include <cstdint>
#include <cstdio>

static bool failed(const char* action, std::int32_t code) {
    if (code >= 0)
        return false; // 0 is success, a positive code a warning
    std::fprintf(stderr, "%s failed with code %d\n", action, static_cast<int>(code));
    return true;
}

static void print(vykel::IDevice& device) {
    std::printf("KEL%u", static_cast<unsigned>(device.getNumber()));
    const char* const alias = device.getAlias(); // a text is valid until the next call on the device
    std::printf("  %s", alias == nullptr ? "takes no alias" : alias);
    std::printf("  %s\n", device.getPersistentToken(1));
}

static bool listDevices(vykel::IDeviceList& list) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    list.refresh(&status); // do it again whenever list.isStale() says so
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count && status.code >= 0; ++index) {
        vykel::IDevice* const device = list.getDevice(index, 0, &status);
        if (device != nullptr)
            print(*device); // the list owns it, until its next refresh or its release
    }
    return !failed("listing the devices", status.code);
}

int main() {
    if (failed("initialising", vykeldevenum_initialize())) // loads the plug-ins
        return 1;
    vykel::IDeviceList* list = nullptr;
    bool listed = false;
    if (!failed("making a list", vykeldevenum_getAllKelDevices(0, &list))) {
        listed = listDevices(*list);
        list->release(); // never delete: the library owns the memory
    }
    vykeldevenum_finalize(); // unloads the plug-ins
    return listed ? 0 : 1;
}
