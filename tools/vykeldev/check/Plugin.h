#ifndef VYKELDEV_CHECK_PLUGIN_H
#define VYKELDEV_CHECK_PLUGIN_H

#include "check/Rule.h"
#include "check/Trace.h"
#include "vykel/PluginEntryPoints.h"
#include "vytpl/NonCopyable.h"
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <windows.h>

/// The plug-in under check, its lists and devices. Every call goes through Trace::call. Every status block
/// but that of a second refresh has 8 bytes, and the memory after it is watched; writing there is an
/// incident of the rule 'status-guard'.
namespace vykeldev::check {

/// A text of a plug-in, copied; none for null.
using PluginText = std::optional<std::string>;

inline PluginText copied(const char* text) {
    return text == nullptr ? PluginText() : PluginText(text);
}

/// A text as it may appear in an observation. (Were it named `quoted`, a std::string would go to
/// std::quoted.)
std::string quotedText(const PluginText& text);

/// Makes a call with a status block of 8 bytes, in which the code is `preset` before. Returns the code that
/// the call left. Reports an incident when it changed more than that.
std::int32_t codeLeft(const char* operation, std::int32_t preset, Trace& trace,
                      const std::function<void(vykel::StatusBlock*)>& call);

/// Calls the operations of an object of the plug-in.
template <class Interface>
struct PluginObject {
    template <class Operation, class... Arguments>
    auto call(const char* name, Operation operation, Arguments... arguments) const {
        return trace->call(name, [&] { return (object->*operation)(arguments...); });
    }

    /// Calls an operation that takes a status block last; returns the code in it.
    template <class Operation, class... Arguments>
    std::int32_t report(const char* name, std::int32_t preset, Operation operation,
                        Arguments... arguments) const {
        return codeLeft(name, preset, *trace,
                        [&](vykel::StatusBlock* status) { (object->*operation)(arguments..., status); });
    }

    Interface* object = nullptr;
    Trace* trace = nullptr;
};

/// A device: borrows the plug-in's object.
struct Device : PluginObject<vykel::IDevice> {
    using Interface = vykel::IDevice;

    std::int32_t getVersion() const { return call("IDevice::getVersion", &Interface::getVersion); }
    std::uint32_t getSortKey() const { return call("getSortKey", &Interface::getSortKey); }
    std::uint32_t getNumber() const { return call("getNumber", &Interface::getNumber); }
    PluginText getAlias() const { return copied(ownAlias()); }
    PluginText getPersistentToken(std::uint32_t format) const { return copied(ownToken(format)); }
    /// The plug-in's own texts instead of copies.
    const char* ownAlias() const { return call("getAlias", &Interface::getAlias); }
    const char* ownToken(std::uint32_t format) const {
        return call("getPersistentToken", &Interface::getPersistentToken, format);
    }
    /// These return the code that is left.
    std::int32_t setNumber(std::uint32_t number) const {
        return report("setNumber", 0, &Interface::setNumber, number);
    }
    std::int32_t setAlias(const std::string& alias) const {
        return report("setAlias", 0, &Interface::setAlias, alias.c_str(), 1, 0);
    }
};

/// What an operation answers that gives out an object.
template <class Object>
struct Answer {
    std::optional<Object> object;
    std::int32_t code;
};

/// A list, released at the end. `preset` is the code in the block before the call.
struct List : PluginObject<vykel::IDeviceList> {
    using Interface = vykel::IDeviceList;
    List(Interface* list, Trace* toTrace)
        : PluginObject{list, toTrace}, ownership(list, [toTrace](Interface* own) {
              toTrace->callAtEnd("release", [own] { own->release(); });
          }) {}

    std::int32_t getVersion() const { return call("IDeviceList::getVersion", &Interface::getVersion); }
    bool isStale() const { return call("isStale", &Interface::isStale); }
    std::int32_t refresh(std::int32_t preset = 0) const {
        return report("refresh", preset, &Interface::refresh);
    }
    std::uint32_t getCount() const { return call("getCount", &Interface::getCount); }
    Answer<Device> getDevice(std::uint32_t index, std::int32_t minimumVersion = 0,
                             std::int32_t preset = 0) const;
    std::int32_t attach(std::uint64_t token) const { return report("attach", 0, &Interface::attach, token); }
    void detach(std::uint64_t token) const { call("detach", &Interface::detach, token); }

private:
    std::unique_ptr<Interface, std::function<void(Interface*)>> ownership;
};

/// What becomes of the library at the end. Only one rule is about being unloaded.
using Ending = void (*)(HMODULE) noexcept;
inline void stayLoaded(HMODULE) noexcept {}

/// The plug-in's library, loaded.
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, Ending>;
/// Throws Broken.
Module loadModule(const Subject& subject, Ending ending = stayLoaded);

/// The plug-in, loaded; finalised at the end when it is initialised. Construction throws Broken.
class Plugin : private vytpl::NonCopyableT<Plugin> {
public:
    explicit Plugin(const Subject& subject, Ending ending = stayLoaded);
    ~Plugin();

    /// Throws a Refusal when the plug-in refuses; `when` is a part of its text.
    template <class Refusal, class... Parts>
    void initialize(const Parts&... when) {
        const std::int32_t code = trace.call("vykel_initializePlugin", initializePlugin);
        mustAccept<Refusal>(code, "vykel_initializePlugin ", when..., "refused with ");
        initialized = true;
    }
    Answer<List> getInterface(std::int32_t version) const;
    /// A new list. Throws a Refusal when the plug-in refuses, and Broken.
    template <class Refusal = Broken>
    List makeList() const {
        auto [list, code] = getInterface(0);
        mustAccept<Refusal>(code, "no list this time: vykel_getPluginInterface answered ");
        if (!list)
            throw Broken("vykel_getPluginInterface answered ", code, " and stored no list");
        return std::move(*list);
    }

    Trace& trace;

private:
    const Module module;
    decltype(vykel_initializePlugin)* initializePlugin;
    decltype(vykel_getPluginInterface)* getPluginInterface;
    decltype(vykel_finalizePlugin)* finalizePlugin;
    bool initialized = false;
};

} // namespace vykeldev::check

#endif
