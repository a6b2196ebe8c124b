// A complete client of the library, in C: lists the devices of this machine. Exit codes: 0 listed, 1 failed,
// 4 listed with a warning.

#include "vykel/vykel_c.h"
#include <stdio.h>

static bool failed(const char* action, int32_t code) {
    if (code >= 0)
        return false; // 0 is success, a positive code a warning
    fflush(stdout);   // what was printed comes first, also where both streams go to one file
    fprintf(stderr, "%s failed with code %d\n", action, (int)code);
    return true;
}

static void printDevice(vykel_Device* device) {
    const uint32_t number = device->operations->getNumber(device);
    if (number == VYKEL_NO_DEVICE_NUMBER)
        printf("no number");
    else
        printf("KEL%u", (unsigned)number);
    const char* const alias = device->operations->getAlias(device); // valid until the next call on the device
    printf("  %s", alias == NULL ? "takes no alias" : alias);
    printf("  %s\n", device->operations->getPersistentToken(device, 1));
}

/// Prints every device of the list; false when one of them was refused.
static bool printDevices(vykel_DeviceList* list) {
    bool complete = true;
    const uint32_t count = list->operations->getCount(list);
    for (uint32_t index = 0; index < count; ++index) {
        vykel_StatusBlock status = vykel_makeStatusBlock();
        vykel_Device* const device = list->operations->getDevice(list, index, 0, &status);
        if (device != NULL)
            printDevice(device); // the list owns it, until its next refresh or its release
        else
            complete = !failed("getting a device", status.code) && complete;
    }
    return complete;
}

static int listDevices(vykel_DeviceList* list) {
    vykel_StatusBlock status = vykel_makeStatusBlock();
    list->operations->refresh(list, &status); // refresh again whenever isStale returns true
    const bool complete = printDevices(list); // a refresh that fails may leave devices readable
    if (failed("refreshing the list", status.code)) {
        if (status.line != 0)
            fprintf(stderr, "  raised in %s, line %u\n", status.file, (unsigned)status.line);
        return list->operations->getCount(list) == 0 ? 1 : 4;
    }
    return complete ? 0 : 4;
}

int main(void) {
    if (failed("initialising", vykeldevenum_initialize())) // loads the plug-ins
        return 1;
    vykel_DeviceList* list = NULL;
    int result = 1;
    if (!failed("making a list", vykeldevenum_getAllKelDevices(0, &list))) {
        result = listDevices(list);
        list->operations->release(list); // never free: the library owns the memory
    }
    vykeldevenum_finalize(); // unloads the plug-ins
    return result;
}
