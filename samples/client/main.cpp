// A complete client of the library: lists the devices of this machine. Exit codes: 0 listed, 1 failed, 4
// listed with a warning.

#include "vykel/vykeldevenum.h"
#include <cstdint>
#include <cstdio>

static bool failed(const char* action, std::int32_t code) {
    if (code >= 0)
        return false;    // 0 is success, a positive code a warning
    std::fflush(stdout); // what was printed comes first, also where both streams go to one file
    std::fprintf(stderr, "%s failed with code %d\n", action, static_cast<int>(code));
    return true;
}

static void print(vykel::IDevice& device) {
    const std::uint32_t number = device.getNumber();
    if (number == vykel::noDeviceNumber)
        std::printf("no number");
    else
        std::printf("KEL%u", static_cast<unsigned>(number));
    const char* const alias = device.getAlias(); // a text is valid until the next call on the device
    std::printf("  %s", alias == nullptr ? "takes no alias" : alias);
    std::printf("  %s\n", device.getPersistentToken(1));
}

/// Prints every device of the list; false when one of them was refused.
static bool printDevices(vykel::IDeviceList& list) {
    bool complete = true;
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        vykel::IDevice* const device = list.getDevice(index, 0, &status);
        if (device != nullptr)
            print(*device); // the list owns it, until its next refresh or its release
        else
            complete = !failed("getting a device", status.code) && complete;
    }
    return complete;
}

static int listDevices(vykel::IDeviceList& list) {
    vykel::StatusBlock status = vykel::makeStatusBlock();
    list.refresh(&status);                    // do it again whenever list.isStale() says so
    const bool complete = printDevices(list); // a refresh that fails may leave devices readable
    if (failed("refreshing the list", status.code)) {
        if (status.line != 0)
            std::fprintf(stderr, "  raised in %s, line %u\n", status.file,
                         static_cast<unsigned>(status.line));
        return list.getCount() == 0 ? 1 : 4;
    }
    return complete ? 0 : 4;
}

int main() {
    if (failed("initialising", vykeldevenum_initialize())) // loads the plug-ins
        return 1;
    vykel::IDeviceList* list = nullptr;
    int result = 1;
    if (!failed("making a list", vykeldevenum_getAllKelDevices(0, &list))) {
        result = listDevices(*list);
        list->release(); // never delete: the library owns the memory
    }
    vykeldevenum_finalize(); // unloads the plug-ins
    return result;
}
