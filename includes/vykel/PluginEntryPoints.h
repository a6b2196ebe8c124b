#ifndef VYKEL_PLUGINENTRYPOINTS_H
#define VYKEL_PLUGINENTRYPOINTS_H

#include "vykel/IDeviceList.h"
#include <cstdint>

/// \file
/// The three functions that an enumerator plug-in exports under these names. The client library does not use
/// a plug-in that lacks one. It calls all three under one lock, never two at once. They must let no exception
/// out. Neither they nor the operations of lists and devices may call the client library.

/// Exports an entry point under its plain name; write it before the return type.
#if defined(_WIN32)
#define VYKEL_PLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define VYKEL_PLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// Called once, right after loading. A negative result refuses: the plug-in is unloaded at once, without a
/// call of vykel_finalizePlugin. A plug-in registered twice is called twice.
VYKEL_PLUGIN_EXPORT std::int32_t vykel_initializePlugin();

/// Called once for every list that a client obtains. `version` is 0, `*list` null on entry. A non-negative
/// result stores a new list, which the caller owns and ends with release(). A negative result means no list
/// from this plug-in this time; the plug-in stays loaded.
VYKEL_PLUGIN_EXPORT std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list);

/// Called once before unloading, only after a successful vykel_initializePlugin; the result is ignored.
/// Every list has been released by then. Never called when the process ends without the client's last
/// vykeldevenum_finalize.
VYKEL_PLUGIN_EXPORT std::int32_t vykel_finalizePlugin();

#endif
