#include "check/Plugin.h"

#include "check/Trace.h"
#include "platform/Process.h"
#include "support/Failure.h"
#include "support/Text.h"
#include <cstring>

namespace vykeldev::check {
namespace {

/// A block of 8 bytes, with memory behind it that nobody may write.
class CodeOnlyStatus {
public:
    explicit CodeOnlyStatus(std::int32_t preset) noexcept {
        std::memset(&memory_, guard, sizeof memory_);
        memory_.block.structSize = size;
        memory_.block.code = preset;
    }
    vykel::StatusBlock* block() noexcept { return &memory_.block; }
    std::int32_t code() const noexcept { return memory_.block.code; }
    bool isIntact() const noexcept {
        // All bytes behind are the guard when the first is, and each is like the one before it.
        const auto* const behind = reinterpret_cast<const unsigned char*>(&memory_) + size;
        return memory_.block.structSize == size && *behind == guard &&
               std::memcmp(behind, behind + 1, sizeof memory_ - size - 1) == 0;
    }

private:
    static constexpr std::uint32_t size = 8;
    static constexpr unsigned char guard = 0xA5;
    struct {
        vykel::StatusBlock block;
        unsigned char behindBlock[64];
    } memory_;
};

/// Makes a call that reports into a status block; answers with the code.
template <class Call>
std::int32_t report(Trace& trace, const char* operation, std::int32_t preset, Call&& intoPlugin) {
    CodeOnlyStatus status(preset);
    trace.call(operation, [&] { intoPlugin(status.block()); });
    if (!status.isIntact())
        trace.incident("status-guard", std::string(operation) + " changed the block beyond its code");
    return status.code();
}

PluginText copied(const char* text) {
    return text == nullptr ? PluginText() : PluginText(text);
}

template <class Function>
Function* find(HMODULE module, const char* name, std::string& missing) {
    const FARPROC address = GetProcAddress(module, name);
    if (address == nullptr)
        missing += (missing.empty() ? "not exported: " : ", ") + std::string(name);
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
}

} // namespace

std::string quoted(const PluginText& text) {
    return text ? "'" + printable(*text) + "'" : "null";
}

bool isUtf8(const PluginText& text) {
    return !text || text->empty() ||
           MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text->data(), static_cast<int>(text->size()),
                               nullptr, 0) != 0;
}

std::int32_t Device::getVersion() const {
    return trace_->call("IDevice::getVersion", [this] { return device_->getVersion(); });
}

PluginText Device::getPersistentToken(std::uint32_t format) const {
    return trace_->call("getPersistentToken", [&] { return copied(device_->getPersistentToken(format)); });
}

const char* Device::ownToken(std::uint32_t format) const {
    return trace_->call("getPersistentToken", [&] { return device_->getPersistentToken(format); });
}

std::uint32_t Device::getSortKey() const {
    return trace_->call("getSortKey", [this] { return device_->getSortKey(); });
}

std::uint32_t Device::getNumber() const {
    return trace_->call("getNumber", [this] { return device_->getNumber(); });
}

PluginText Device::getAlias() const {
    return trace_->call("getAlias", [this] { return copied(device_->getAlias()); });
}

const char* Device::ownAlias() const {
    return trace_->call("getAlias", [this] { return device_->getAlias(); });
}

std::int32_t Device::setNumber(std::uint32_t number) const {
    return report(*trace_, "setNumber", 0,
                  [&](vykel::StatusBlock* status) { device_->setNumber(number, status); });
}

std::int32_t Device::setAlias(const std::string& alias) const {
    return report(*trace_, "setAlias", 0,
                  [&](vykel::StatusBlock* status) { device_->setAlias(alias.c_str(), 1, 0, status); });
}

std::int32_t List::getVersion() const {
    return trace_->call("IDeviceList::getVersion", [this] { return list_->getVersion(); });
}

bool List::isStale() const {
    return trace_->call("isStale", [this] { return list_->isStale(); });
}

std::int32_t List::refresh(std::int32_t preset) const {
    return report(*trace_, "refresh", preset, [this](vykel::StatusBlock* status) { list_->refresh(status); });
}

std::uint32_t List::getCount() const {
    return trace_->call("getCount", [this] { return list_->getCount(); });
}

Fetched List::getDevice(std::uint32_t index, std::int32_t minimumVersion, std::int32_t preset) const {
    vykel::IDevice* device = nullptr;
    const std::int32_t code = report(*trace_, "getDevice", preset, [&](vykel::StatusBlock* status) {
        device = list_->getDevice(index, minimumVersion, status);
    });
    if (device == nullptr)
        return {std::nullopt, code};
    return {Device(*device, *trace_), code};
}

std::int32_t List::attach(std::uint64_t token) const {
    return report(*trace_, "attach", 0, [&](vykel::StatusBlock* status) { list_->attach(token, status); });
}

void List::detach(std::uint64_t token) const {
    trace_->call("detach", [&] { list_->detach(token); });
}

void List::Release::operator()(vykel::IDeviceList* list) const noexcept {
    try {
        trace->call("release", [list] { list->release(); });
    } catch (const Skipped&) { // told as an incident
    }
}

Module::Module(const Subject& subject, Ending ending) : ending_(ending) {
    subject.trace.calling("loading the library");
    handle_ = LoadLibraryExW(toWide(subject.path).c_str(), nullptr, 0);
    if (handle_ == nullptr) {
        const Failure failure = systemFailure("loading it", GetLastError(), "");
        throw Broken{failure.what() + (failure.meaning.empty() ? "" : ": " + failure.meaning)};
    }
}

Module::~Module() {
    if (ending_ == Ending::Unloaded)
        unload(handle_);
}

Plugin::Plugin(const Subject& subject, Ending ending) : trace_(subject.trace), module_(subject, ending) {
    std::string missing;
    initialize_ = find<decltype(vykel_initializePlugin)>(module_.get(), "vykel_initializePlugin", missing);
    getInterface_ =
        find<decltype(vykel_getPluginInterface)>(module_.get(), "vykel_getPluginInterface", missing);
    finalize_ = find<decltype(vykel_finalizePlugin)>(module_.get(), "vykel_finalizePlugin", missing);
    if (!missing.empty())
        throw Broken{missing};
}

Plugin::~Plugin() {
    if (!initialized_)
        return;
    try {
        trace_.call("vykel_finalizePlugin", finalize_);
    } catch (const Skipped&) { // told as an incident
    }
}

std::int32_t Plugin::initialize() {
    const std::int32_t code = trace_.call("vykel_initializePlugin", initialize_);
    initialized_ = code >= 0;
    return code;
}

std::int32_t Plugin::getInterface(std::int32_t version, std::optional<List>& list) const {
    vykel::IDeviceList* made = nullptr;
    const std::int32_t code =
        trace_.call("vykel_getPluginInterface", [&] { return getInterface_(version, &made); });
    if (code >= 0 && made != nullptr)
        list.emplace(*made, trace_);
    return code;
}

List Plugin::makeList() const {
    std::optional<List> list;
    const std::int32_t code = getInterface(0, list);
    if (code < 0)
        throw Refused{{"no list this time: vykel_getPluginInterface answered " + std::to_string(code)}};
    if (!list)
        throw Broken{"vykel_getPluginInterface answered " + std::to_string(code) + " and stored no list"};
    return std::move(*list);
}

} // namespace vykeldev::check
