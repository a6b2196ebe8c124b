// An enumerator plug-in in C, with one device: a lamp that takes no alias. It forgets the number of the lamp
// with its list; a real plug-in keeps numbers for good, for every process.

#include "vykel/vykel_c.h"
#include <stdlib.h>

/// A lamp. What others see is its first member, so a pointer to that is a pointer to the whole.
typedef struct Lamp {
    vykel_Device device;
    uint32_t number;
} Lamp;

/// A list with one lamp, built the same way.
typedef struct Lamps {
    vykel_DeviceList list;
    Lamp lamp;
    uint32_t count;
} Lamps;

static void fail(vykel_StatusBlock* status, int32_t code) {
    if (status->code >= 0) // the first error wins
        status->code = code;
}

// The device.

static int32_t getDeviceVersion(vykel_Device* device) {
    (void)device;
    return 1;
}

static const char* getPersistentToken(vykel_Device* device, uint32_t format) {
    (void)device;
    return format == 2 ? "lamps/lamp-1" : "lamp-1";
}

static uint32_t getSortKey(vykel_Device* device) {
    (void)device;
    return 0;
}

static void setNumber(vykel_Device* device, uint32_t number, vykel_StatusBlock* status) {
    (void)status;
    ((Lamp*)device)->number = number;
}

static uint32_t getNumber(vykel_Device* device) {
    return ((Lamp*)device)->number;
}

static void reserved(vykel_Device* device) {
    (void)device;
}

static const char* getAlias(vykel_Device* device) {
    (void)device;
    return NULL; // the lamp takes no alias
}

static void setAlias(vykel_Device* device, const char* alias, int32_t one, int32_t zero,
                     vykel_StatusBlock* status) {
    (void)device, (void)alias, (void)one, (void)zero;
    fail(status, VYKEL_INVALID_PARAMETER);
}

static const vykel_DeviceOperations lampOperations = {
    .getVersion = getDeviceVersion,
    .getPersistentToken = getPersistentToken,
    .getSortKey = getSortKey,
    .setNumber = setNumber,
    .getNumber = getNumber,
    .reserved1 = reserved,
    .reserved2 = reserved,
    .getAlias = getAlias,
    .setAlias = setAlias,
};

// The list.

static int32_t getListVersion(vykel_DeviceList* list) {
    (void)list;
    return 0;
}

static bool isStale(vykel_DeviceList* list) {
    return ((Lamps*)list)->count == 0;
}

static void refresh(vykel_DeviceList* list, vykel_StatusBlock* status) {
    (void)status;
    ((Lamps*)list)->count = 1;
}

static uint32_t getCount(vykel_DeviceList* list) {
    return ((Lamps*)list)->count;
}

static vykel_Device* getDevice(vykel_DeviceList* list, uint32_t index, int32_t minimumVersion,
                               vykel_StatusBlock* status) {
    Lamps* const lamps = (Lamps*)list;
    if (index < lamps->count && minimumVersion <= getDeviceVersion(&lamps->lamp.device))
        return &lamps->lamp.device;
    fail(status, index < lamps->count ? VYKEL_VERSION_MISMATCH : VYKEL_INVALID_PARAMETER);
    return NULL;
}

static void release(vykel_DeviceList* list) {
    free(list);
}

static void attach(vykel_DeviceList* list, uint64_t token, vykel_StatusBlock* status) {
    (void)list, (void)token, (void)status;
}

static void detach(vykel_DeviceList* list, uint64_t token) {
    (void)list, (void)token;
}

static const vykel_PluginListOperations lampsOperations = {
    .operations =
        {
            .getVersion = getListVersion,
            .isStale = isStale,
            .refresh = refresh,
            .getCount = getCount,
            .getDevice = getDevice,
            .release = release,
            .attach = attach,
            .detach = detach,
        },
    .destructor = {release, release}, // never called
};

// The entry points.

int32_t vykel_initializePlugin(void) {
    return 0;
}

int32_t vykel_getPluginInterface(int32_t version, vykel_DeviceList** list) {
    if (version != 0)
        return VYKEL_VERSION_MISMATCH;
    Lamps* const lamps = malloc(sizeof *lamps);
    if (lamps == NULL)
        return VYKEL_MEMORY_FULL;
    lamps->list.operations = &lampsOperations.operations;
    lamps->lamp.device.operations = &lampOperations;
    lamps->lamp.number = VYKEL_NO_DEVICE_NUMBER;
    lamps->count = 0;
    *list = &lamps->list;
    return 0;
}

int32_t vykel_finalizePlugin(void) {
    return 0;
}
