#include "check/Plugin.h"

#include "machine/PluginFile.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Process.h"
#include "system/Text.h"
#include <cstring>

namespace vykeldev::check {

std::string quotedText(const PluginText& text) {
    return text ? "'" + printable(*text) + "'" : "null";
}

std::int32_t codeLeft(const char* operation, std::int32_t preset, Trace& trace,
                      const std::function<void(vykel::StatusBlock*)>& call) {
    constexpr std::uint32_t codeOnlySize = 8;
    constexpr unsigned char guard = 0xA5;
    struct {
        vykel::StatusBlock block;
        unsigned char afterBlock[64];
    } memory;
    std::memset(&memory, guard, sizeof memory);
    memory.block.structSize = codeOnlySize;
    memory.block.code = preset;
    trace.call(operation, [&] { call(&memory.block); });
    // All bytes after the code are the guard when the first is, and each is like the one before it.
    const auto* const after = reinterpret_cast<const unsigned char*>(&memory) + codeOnlySize;
    if (memory.block.structSize != codeOnlySize || *after != guard ||
        std::memcmp(after, after + 1, sizeof memory - codeOnlySize - 1) != 0)
        trace.incident("status-guard", std::string(operation) + " changed the block beyond its code");
    return memory.block.code;
}

Fetched List::getDevice(std::uint32_t index, std::int32_t minimumVersion, std::int32_t preset) const {
    vykel::IDevice* device = nullptr;
    const std::int32_t code = codeLeft("getDevice", preset, *trace, [&](vykel::StatusBlock* status) {
        device = object->getDevice(index, minimumVersion, status);
    });
    return {device == nullptr ? std::nullopt : std::optional(Device{{device, trace}}), code};
}

Module loadModule(const Subject& subject, Ending ending) {
    subject.trace.calling("loading the library");
    Module module(LoadLibraryExW(toWide(subject.path).c_str(), nullptr, 0), ending);
    if (module)
        return module;
    const Failure failure = systemFailure("loading it", GetLastError(), "");
    const std::string bad = describeBadDependencies(subject.path);
    throw Broken(failure.what(), (failure.meaning.empty() ? "" : ": " + failure.meaning),
                 (bad.empty() ? "" : "; " + bad));
}

Plugin::Plugin(const Subject& subject, Ending ending)
    : trace(subject.trace), module(loadModule(subject, ending)) {
    std::string missing;
    const auto find = [&](auto*& function, const char* name) {
        using Function = std::remove_reference_t<decltype(function)>;
        using AnyFunction = void (*)(); // the compilers warn of a direct cast between unlike signatures
        function =
            reinterpret_cast<Function>(reinterpret_cast<AnyFunction>(GetProcAddress(module.get(), name)));
        if (function == nullptr)
            missing += (missing.empty() ? "not exported: " : ", ") + std::string(name);
    };
    find(initializePlugin, "vykel_initializePlugin");
    find(getPluginInterface, "vykel_getPluginInterface");
    find(finalizePlugin, "vykel_finalizePlugin");
    if (!missing.empty())
        throw Broken(missing);
}

Plugin::~Plugin() {
    if (initialized)
        trace.callAtEnd("vykel_finalizePlugin", finalizePlugin);
}

std::int32_t Plugin::initialize() {
    const std::int32_t code = trace.call("vykel_initializePlugin", initializePlugin);
    initialized = code >= 0;
    return code;
}

std::int32_t Plugin::getInterface(std::int32_t version, std::optional<List>& list) const {
    vykel::IDeviceList* made = nullptr;
    const std::int32_t code =
        trace.call("vykel_getPluginInterface", [&] { return getPluginInterface(version, &made); });
    if (code >= 0 && made != nullptr)
        list.emplace(made, &trace);
    return code;
}

List Plugin::makeList() const {
    std::optional<List> list;
    const std::int32_t code = getInterface(0, list);
    mustAccept<Refused>(code, "no list this time: vykel_getPluginInterface answered ");
    if (!list)
        throw Broken("vykel_getPluginInterface answered ", code, " and stored no list");
    return std::move(*list);
}

} // namespace vykeldev::check
