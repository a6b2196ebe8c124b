#include "check/Plugin.h"

#include "machine/PluginFile.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Process.h"
#include "system/Text.h"
#include <cstring>

namespace vykeldev::check {
namespace {

constexpr std::uint32_t codeOnlySize = 8;
constexpr unsigned char guard = 0xA5;

} // namespace

std::string quotedText(const PluginText& text) {
    return text ? "'" + printable(*text) + "'" : "null";
}

CodeOnlyStatus::CodeOnlyStatus(std::int32_t preset) noexcept {
    std::memset(&memory, guard, sizeof memory);
    memory.block.structSize = codeOnlySize;
    memory.block.code = preset;
}

std::int32_t CodeOnlyStatus::codeAfter(const char* operation, Trace& trace) const {
    // All bytes after the code are the guard when the first is, and each is like the one before it.
    const auto* const after = reinterpret_cast<const unsigned char*>(&memory) + codeOnlySize;
    if (memory.block.structSize != codeOnlySize || *after != guard ||
        std::memcmp(after, after + 1, sizeof memory - codeOnlySize - 1) != 0)
        trace.incident("status-guard", std::string(operation) + " changed the block beyond its code");
    return memory.block.code;
}

Fetched List::getDevice(std::uint32_t index, std::int32_t minimumVersion, std::int32_t preset) const {
    CodeOnlyStatus status(preset);
    vykel::IDevice* const device =
        call("getDevice", &Interface::getDevice, index, minimumVersion, status.block());
    const std::int32_t code = status.codeAfter("getDevice", *trace);
    if (device == nullptr)
        return {std::nullopt, code};
    return {Device(*device, *trace), code};
}

void List::Release::operator()(Interface* list) const noexcept {
    try {
        trace->call("release", [list] { list->release(); });
    } catch (const Skipped&) { // reported as an incident
    }
}

Module::Module(const Subject& subject, Ending itsEnding) : ending(itsEnding) {
    subject.trace.calling("loading the library");
    handle = LoadLibraryExW(toWide(subject.path).c_str(), nullptr, 0);
    if (handle != nullptr)
        return;
    const Failure failure = systemFailure("loading it", GetLastError(), "");
    const std::string bad = describeBadDependencies(subject.path);
    throw Broken(failure.what(), (failure.meaning.empty() ? "" : ": " + failure.meaning),
                 (bad.empty() ? "" : "; " + bad));
}

Module::~Module() {
    if (ending == Ending::Unloaded)
        unload(handle);
}

template <class Function>
void Module::find(Function*& function, const char* name, std::string& missing) const {
    function = reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(handle, name)));
    if (function == nullptr)
        missing += (missing.empty() ? "not exported: " : ", ") + std::string(name);
}

Plugin::Plugin(const Subject& subject, Ending ending) : trace(subject.trace), module(subject, ending) {
    std::string missing;
    module.find(initializePlugin, "vykel_initializePlugin", missing);
    module.find(getPluginInterface, "vykel_getPluginInterface", missing);
    module.find(finalizePlugin, "vykel_finalizePlugin", missing);
    if (!missing.empty())
        throw Broken(missing);
}

Plugin::~Plugin() {
    if (!initialized)
        return;
    try {
        trace.call("vykel_finalizePlugin", finalizePlugin);
    } catch (const Skipped&) { // reported as an incident
    }
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
        list.emplace(*made, trace);
    return code;
}

List Plugin::makeList() const {
    std::optional<List> list;
    const std::int32_t code = getInterface(0, list);
    if (code < 0)
        throw Refused("no list this time: vykel_getPluginInterface answered ", code);
    if (!list)
        throw Broken("vykel_getPluginInterface answered ", code, " and stored no list");
    return std::move(*list);
}

} // namespace vykeldev::check
