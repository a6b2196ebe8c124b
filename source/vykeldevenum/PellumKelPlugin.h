#ifndef VYKELDEVENUM_PELLUMKELPLUGIN_H
#define VYKELDEVENUM_PELLUMKELPLUGIN_H

#include "DeviceLists.h"
#include "vydynlib/dynload.h"
#include "vytpl/NonCopyable.h"
#include <cstdint>
#include <string>

namespace vykel {

/// One enumerator plug-in: its library and entry points. Used under the global lock.
class PellumKelPlugin : private vytpl::NonCopyableT<void> {
public:
    /// Nothing is loaded yet. `libraryPath` is UTF-8, as the registry holds it.
    explicit PellumKelPlugin(std::string libraryPath);

    /// Abandons a library that is still loaded, without calling the plug-in. That happens only when this
    /// library is unloaded without its last finalize: the system may have unloaded the plug-in before. Every
    /// other path calls unload first.
    virtual ~PellumKelPlugin();

    /// Does the three steps below, in their order. When one throws, so does this; call unload then.
    void load();

    /// Loads the library. Throws InvalidParameter or MemoryFull.
    void loadLibrary();

    /// Looks up all three entry points. Throws InvalidParameter when one is missing.
    void resolveEntryPoints();

    /// Initialises the plug-in. Throws its own negative code, or what it threw.
    void initialize();

    /// A new list from the plug-in. Throws PluginNotInitialized, the plug-in's own negative code, or what the
    /// plug-in threw.
    DeviceListPtr getInterface();

    /// Finalises the plug-in if it is initialised, and unloads its library. May be called again.
    void unload() noexcept;

private:
    using GetPluginInterface = std::int32_t (*)(std::int32_t version, IDeviceList** list);
    using InitializePlugin = std::int32_t (*)();
    using FinalizePlugin = std::int32_t (*)();

    /// Looks up one entry point. Throws InvalidParameter when it is missing.
    template <class Function>
    void resolve(Function& function, const char* name);

    vydynlib::LibraryHandle library;
    std::string path;
    GetPluginInterface getPluginInterface = nullptr;
    InitializePlugin initializePlugin = nullptr;
    FinalizePlugin finalizePlugin = nullptr;
    bool initialized = false;
};

} // namespace vykel

#endif
