#ifndef VYKELDEV_CHECK_PLUGIN_H
#define VYKELDEV_CHECK_PLUGIN_H

#include "check/Rule.h"
#include "vykel/PluginEntryPoints.h"
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

/// The plug-in under check, its lists and devices. Every call goes through Trace::call. Every status block
/// has 8 bytes and is watched behind them; writing there is an incident of the rule 'status-guard'.
namespace vykeldev::check {

/// A text of a plug-in, copied; none for null.
using PluginText = std::optional<std::string>;

/// A text as it may stand in an observation.
std::string quoted(const PluginText& text);

/// True of valid UTF-8, and of no text.
bool isUtf8(const PluginText& text);

/// A device. As valid as the object behind it.
class Device {
public:
    Device(vykel::IDevice& device, Trace& trace) : device_(&device), trace_(&trace) {}

    std::int32_t getVersion() const;
    PluginText getPersistentToken(std::uint32_t format) const;
    std::uint32_t getSortKey() const;
    std::uint32_t getNumber() const;
    PluginText getAlias() const;
    /// The plug-in's own texts instead of copies.
    const char* ownToken(std::uint32_t format) const;
    const char* ownAlias() const;
    /// Answer with the code that is left.
    std::int32_t setNumber(std::uint32_t number) const;
    std::int32_t setAlias(const std::string& alias) const;

private:
    vykel::IDevice* device_;
    Trace* trace_;
};

/// What getDevice answers.
struct Fetched {
    std::optional<Device> device;
    std::int32_t code;
};

/// A list, released at the end. `preset` is the code in the block before the call.
class List {
public:
    List(vykel::IDeviceList& list, Trace& trace) : list_(&list, Release{&trace}), trace_(&trace) {}

    std::int32_t getVersion() const;
    bool isStale() const;
    std::int32_t refresh(std::int32_t preset = 0) const;
    std::uint32_t getCount() const;
    Fetched getDevice(std::uint32_t index, std::int32_t minimumVersion = 0, std::int32_t preset = 0) const;
    std::int32_t attach(std::uint64_t token) const;
    void detach(std::uint64_t token) const;

    /// Which list it is, for comparisons.
    const void* identity() const noexcept { return list_.get(); }

private:
    struct Release {
        Trace* trace;
        void operator()(vykel::IDeviceList* list) const noexcept;
    };
    std::unique_ptr<vykel::IDeviceList, Release> list_;
    Trace* trace_;
};

/// What becomes of the library. How it takes being unloaded is the matter of one rule alone.
enum class Ending { StaysLoaded, Unloaded };

/// A loaded library. Construction throws Broken.
class Module {
public:
    explicit Module(const Subject& subject, Ending ending = Ending::StaysLoaded);
    ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    HMODULE get() const noexcept { return handle_; }

private:
    HMODULE handle_ = nullptr;
    Ending ending_;
};

/// The plug-in, loaded; finalised at the end when it is initialised. Construction throws Broken.
class Plugin {
public:
    explicit Plugin(const Subject& subject, Ending ending = Ending::StaysLoaded);
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Answers with the code.
    std::int32_t initialize();
    /// The code, and the list that is stored with it.
    std::int32_t getInterface(std::int32_t version, std::optional<List>& list) const;
    /// A new list. Throws Broken.
    List makeList() const;
    Trace& trace() const noexcept { return trace_; }

private:
    Trace& trace_;
    Module module_;
    decltype(vykel_initializePlugin)* initialize_;
    decltype(vykel_getPluginInterface)* getInterface_;
    decltype(vykel_finalizePlugin)* finalize_;
    bool initialized_ = false;
};

} // namespace vykeldev::check

#endif
