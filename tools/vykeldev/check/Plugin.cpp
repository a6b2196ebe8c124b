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
    struct {
        vykel::StatusBlock block;
        unsigned char afterBlock[64];
    } memory, expected;
    std::memset(&memory, 0xA5, sizeof memory);
    memory.block.structSize = 8;
    memory.block.code = preset;
    std::memcpy(&expected, &memory, sizeof memory);
    trace.call(operation, [&] { call(&memory.block); });
    expected.block.code = memory.block.code;
    if (std::memcmp(&expected, &memory, sizeof memory) != 0)
        trace.incident("status-guard", std::string(operation) + " changed the block beyond its code");
    return memory.block.code;
}

Answer<Device> List::getDevice(std::uint32_t index, std::int32_t minimumVersion, std::int32_t preset) const {
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
    std::vector<std::string> missing;
    const auto find = [&](auto*& function, const char* name) {
        using Function = std::remove_reference_t<decltype(function)>;
        // Through another type: the compilers warn of a direct cast between unlike signatures.
        const auto address = reinterpret_cast<void (*)()>(GetProcAddress(module.get(), name));
        function = reinterpret_cast<Function>(address);
        if (function == nullptr)
            missing.emplace_back(name);
    };
    find(initializePlugin, "vykel_initializePlugin");
    find(getPluginInterface, "vykel_getPluginInterface");
    find(finalizePlugin, "vykel_finalizePlugin");
    if (!missing.empty())
        throw Broken("not exported: ", joined(missing, ", "));
}

Plugin::~Plugin() {
    if (initialized)
        trace.callAtEnd("vykel_finalizePlugin", finalizePlugin);
}

Answer<List> Plugin::getInterface(std::int32_t version) const {
    vykel::IDeviceList* list = nullptr;
    const std::int32_t code =
        trace.call("vykel_getPluginInterface", [&] { return getPluginInterface(version, &list); });
    if (code < 0 || list == nullptr)
        return {std::nullopt, code};
    return {List(list, &trace), code};
}

} // namespace vykeldev::check
