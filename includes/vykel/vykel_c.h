#ifndef VYKEL_VYKEL_C_H
#define VYKEL_VYKEL_C_H

#include <stdbool.h>
#include <stdint.h>

/// \file
/// The binary contract of the library for C99: the same objects, slots, codes and functions as in the C++
/// headers, which say what each operation does. An object is a pointer to a table of function pointers; every
/// function takes the object as its first argument: `list->operations->refresh(list, &status)`.
/// C++ programs may include this header beside the others; then only those declare the functions.

#ifdef __cplusplus
extern "C" {
#endif

/// What the library itself reports: 0 success, negative error, positive warning; see vykel::StatusCode. A
/// plug-in may return negative codes of its own.
enum vykel_StatusCode {
    VYKEL_SUCCESS = 0,                     ///< No error.
    VYKEL_CONFIGURATION_FAULT = -50209,    ///< A lock file or the legacy alias file cannot be used.
    VYKEL_MEMORY_FULL = -52000,            ///< Memory is exhausted.
    VYKEL_GENERAL_FAULT = -52003,          ///< Not initialised, or a failure that has no code of its own.
    VYKEL_BAD_CAST = -52004,               ///< A cast failed; only a faulty plug-in causes this.
    VYKEL_INVALID_PARAMETER = -52005,      ///< An argument is invalid, or a plug-in cannot be loaded.
    VYKEL_RESOURCE_NOT_FOUND = -52006,     ///< A registry key or a standard folder cannot be read.
    VYKEL_OS_FAULT = -52008,               ///< An object of the operating system cannot be used.
    VYKEL_PLUGIN_NOT_INITIALIZED = -52010, ///< A plug-in was asked for a list while not initialised.
    VYKEL_VERSION_MISMATCH = -63193        ///< A device or an interface has another version.
};

/// What getNumber of a device returns while the device has no number yet.
#define VYKEL_NO_DEVICE_NUMBER 0xFFFFFFFFu

/// The caller's record into which an operation reports its outcome; see vykel::StatusBlock. The first error
/// wins. A plug-in must check `structSize` before it writes anything but `code`.
typedef struct vykel_StatusBlock {
    uint32_t structSize;          ///< Size in bytes of the caller's record: 8, or 208 and more.
    int32_t code;                 ///< 0 success, negative error, positive warning.
    char component[10];           ///< Name of the raising component, NUL-terminated.
    char file[101];               ///< Source file of the raise site, NUL-terminated.
    unsigned char padding1[1];    ///< Never read or written.
    uint32_t line;                ///< Source line of the raise site.
    unsigned char padding2[4];    ///< Never read or written.
    uint64_t reserved;            ///< 0 whenever the detail fields were written.
    unsigned char unassigned[72]; ///< Never read or written.
} vykel_StatusBlock;

/// A block of full size with code 0: what a client passes to learn component, file and line of an error.
static inline vykel_StatusBlock vykel_makeStatusBlock(void) {
    const vykel_StatusBlock block = {208, 0, {0}, {0}, {0}, 0, {0}, 0, {0}};
    return block;
}

/// Names the type without the word `struct`.
typedef struct vykel_Device vykel_Device;

/// The nine slots of a device.
typedef struct vykel_DeviceOperations {
    /// The interface version of the device.
    int32_t (*getVersion)(vykel_Device* device);
    /// A text that names the device for good, never null. `format` is 1 or 2.
    const char* (*getPersistentToken)(vykel_Device* device, uint32_t format);
    /// Orders the devices that have no number yet: lower keys are numbered first.
    uint32_t (*getSortKey)(vykel_Device* device);
    /// Gives the device its machine-wide number.
    void (*setNumber)(vykel_Device* device, uint32_t number, vykel_StatusBlock* status);
    /// The number, or VYKEL_NO_DEVICE_NUMBER.
    uint32_t (*getNumber)(vykel_Device* device);
    /// Never called.
    void (*reserved1)(vykel_Device* device);
    /// Never called.
    void (*reserved2)(vykel_Device* device);
    /// Null when the device takes no alias, an empty text when it has none yet.
    const char* (*getAlias)(vykel_Device* device);
    /// Gives the device an alias. `one` is 1 and `zero` is 0.
    void (*setAlias)(vykel_Device* device, const char* alias, int32_t one, int32_t zero,
                     vykel_StatusBlock* status);
} vykel_DeviceOperations;

/// One device; see vykel::IDevice. It belongs to its list and is valid until that list is refreshed again or
/// released. Texts are UTF-8, owned by the device, and valid until the next call on the same device.
struct vykel_Device {
    const vykel_DeviceOperations* operations; ///< All that others may see of a device.
};

/// Names the type without the word `struct`.
typedef struct vykel_DeviceList vykel_DeviceList;

/// The eight slots of a list that may be called. The destructor of C++ follows them in the table; it takes
/// one slot or two, depending on the compiler.
typedef struct vykel_DeviceListOperations {
    /// The version of this interface: 0.
    int32_t (*getVersion)(vykel_DeviceList* list);
    /// True when a refresh may show something new.
    bool (*isStale)(vykel_DeviceList* list);
    /// Brings the list up to date; devices handed out before become invalid.
    void (*refresh)(vykel_DeviceList* list, vykel_StatusBlock* status);
    /// Number of devices after the last refresh; 0 before the first.
    uint32_t (*getCount)(vykel_DeviceList* list);
    /// The device at a zero-based index; null after an error.
    vykel_Device* (*getDevice)(vykel_DeviceList* list, uint32_t index, int32_t minimumVersion,
                               vykel_StatusBlock* status);
    /// Ends the list and frees it.
    void (*release)(vykel_DeviceList* list);
    /// Passes an opaque token on to every plug-in's list.
    void (*attach)(vykel_DeviceList* list, uint64_t token, vykel_StatusBlock* status);
    /// Withdraws a token.
    void (*detach)(vykel_DeviceList* list, uint64_t token);
} vykel_DeviceListOperations;

/// A list of devices; see vykel::IDeviceList. Its holder ends it with `release` and never frees it. One list
/// with its devices must not be used by two threads at once.
struct vykel_DeviceList {
    const vykel_DeviceListOperations* operations; ///< All that others may see of a list.
};

/// The whole table of a list that is written in C, in a plug-in: its lists point to `operations` of such a
/// table. Nobody calls the slots of the destructor; set both to the function in `release`, so that even a
/// holder who deletes the list does no harm.
typedef struct vykel_PluginListOperations {
    vykel_DeviceListOperations operations;         ///< The slots that are called.
    void (*destructor[2])(vykel_DeviceList* list); ///< The slots that nobody calls.
} vykel_PluginListOperations;

#ifdef __cplusplus
} // extern "C"
#else

// The three exports of the library; see vykeldevenum.h. Any thread may call any of them at any time.

/// The first call loads every registered plug-in; later calls only add to a count.
int32_t vykeldevenum_initialize(void);
/// Stores a new list over all loaded plug-ins; `version` is 0. The caller owns the list.
int32_t vykeldevenum_getAllKelDevices(int32_t version, vykel_DeviceList** list);
/// Undoes one vykeldevenum_initialize; the last one unloads every plug-in.
int32_t vykeldevenum_finalize(void);

// For programs that load the DLL at run time: the types to which they cast what GetProcAddress returns.

/// A pointer to vykeldevenum_initialize.
typedef int32_t (*vykel_InitializeFunction)(void);
/// A pointer to vykeldevenum_getAllKelDevices.
typedef int32_t (*vykel_GetAllKelDevicesFunction)(int32_t version, vykel_DeviceList** list);
/// A pointer to vykeldevenum_finalize.
typedef int32_t (*vykel_FinalizeFunction)(void);

/// Exports an entry point of a plug-in under its plain name.
#if defined(_WIN32)
#define VYKEL_PLUGIN_EXPORT __declspec(dllexport)
#else
#define VYKEL_PLUGIN_EXPORT __attribute__((visibility("default")))
#endif

// The three functions that a plug-in exports; see PluginEntryPoints.h. Other programs leave them undefined.

/// Called once, right after loading. A negative result refuses.
VYKEL_PLUGIN_EXPORT int32_t vykel_initializePlugin(void);
/// Stores a new list, which the caller owns; `version` is 0.
VYKEL_PLUGIN_EXPORT int32_t vykel_getPluginInterface(int32_t version, vykel_DeviceList** list);
/// Called once before unloading; the result is ignored.
VYKEL_PLUGIN_EXPORT int32_t vykel_finalizePlugin(void);

#endif

#endif
