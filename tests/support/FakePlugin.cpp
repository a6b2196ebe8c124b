#include "support/FakeHost.h"
#include "vykel/PluginEntryPoints.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <typeinfo>
#include <vector>
#include <windows.h>

#ifdef FAKE_OWN_RUNTIME
namespace __gnu_cxx {
void __freeres();
}
#endif

namespace {

using vykel::IDevice;
using vykel::StatusBlock;
using vykeltest::Answer;

struct OwnType {};

/// The plug-in's name, and the test; the last thing that the plug-in tells is that it is being unloaded.
struct Plugin {
    Plugin() {
        void* address = nullptr;
        const char* const text = std::getenv(vykeltest::FakeHost::environmentVariable);
        if (text == nullptr || std::sscanf(text, "%p", &address) != 1)
            std::abort();
        host = static_cast<vykeltest::FakeHost*>(address);
        HMODULE module = nullptr;
        WCHAR path[1024] = {};
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const WCHAR*>(this), &module);
        const DWORD length = GetModuleFileNameW(module, path, 1024);
        // Only the name, without extension: a short text, so that this never needs memory.
        for (const WCHAR* at = path; at != path + length; ++at)
            if (*at == '/' || *at == '\\')
                name.clear();
            else
                name += static_cast<char>(*at);
        name.erase(std::min(name.size(), name.rfind('.')));
    }
    ~Plugin() {
        host->call(name.c_str(), "unload", -1);
#ifdef FAKE_OWN_RUNTIME
        __gnu_cxx::__freeres(); // the runtime's reserve for exceptions; nobody else frees it
#endif
    }

    vykeltest::FakeHost* host = nullptr;
    std::string name;
} plugin;

std::int32_t tell(const char* operation, std::int64_t argument = -1) {
    const Answer answer = plugin.host->call(plugin.name.c_str(), operation, argument);
    switch (answer) {
    case Answer::ThrowBadAlloc:
        throw std::bad_alloc();
    case Answer::ThrowInvalidArgument:
        throw std::invalid_argument("fake");
    case Answer::ThrowBadCast:
        throw std::bad_cast();
    case Answer::ThrowSystemError:
        throw std::system_error(std::make_error_code(std::errc::io_error));
    case Answer::ThrowLogicError:
        throw std::logic_error("fake");
    case Answer::ThrowOwnType:
        throw OwnType();
    default:
        return answer;
    }
}

void tell(const char* operation, std::int64_t argument, StatusBlock* status) {
    const std::int32_t answer = tell(operation, argument);
    if (answer < 0 && status->code >= 0)
        status->code = answer;
}

class Device final : public IDevice {
public:
    Device(vykeltest::FakeDevice& fakeDevice, std::int64_t deviceIndex)
        : fake(fakeDevice), index(deviceIndex) {}

    std::int32_t getVersion() override { return fake.version; }
    const char* getPersistentToken(std::uint32_t) override { return plugin.name.c_str(); }
    std::uint32_t getSortKey() override {
        tell("getSortKey", index);
        return fake.sortKey;
    }
    void setNumber(std::uint32_t number, StatusBlock* status) override {
        tell("setNumber", index, status);
        if (status->code >= 0)
            plugin.host->setNumber(fake, number);
    }
    std::uint32_t getNumber() override {
        tell("getNumber", index);
        return plugin.host->getNumber(fake);
    }
    const char* getAlias() override { return nullptr; }
    void setAlias(const char*, std::int32_t, std::int32_t, StatusBlock*) override {}

private:
    vykeltest::FakeDevice& fake;
    std::int64_t index;
};

class List final : public vykel::IDeviceList {
public:
    std::int32_t getVersion() override { return 0; }
    bool isStale() override { return tell("isStale") == Answer::Yes; }
    void refresh(StatusBlock* status) override {
        devices.clear();
        tell("refresh", -1, status);
        std::uint32_t count = 0;
        vykeltest::FakeDevice* const fakes = plugin.host->devices(plugin.name.c_str(), count);
        for (std::uint32_t i = 0; i < count; ++i)
            devices.emplace_back(fakes[i], i);
    }
    std::uint32_t getCount() override {
        tell("getCount");
        return static_cast<std::uint32_t>(devices.size());
    }
    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion, StatusBlock* status) override {
        const std::int32_t answer = tell("getDevice", index);
        if (answer < 0 && status->code >= 0)
            status->code = answer;
        return answer != 0 || minimumVersion != 0 ? nullptr : &devices[index];
    }
    void release() override {
        const std::unique_ptr<List> self(this);
        tell("release");
    }
    void attach(std::uint64_t token, StatusBlock* status) override {
        tell("attach", static_cast<std::int64_t>(token), status);
    }
    void detach(std::uint64_t token) override { tell("detach", static_cast<std::int64_t>(token)); }

private:
    std::vector<Device> devices;
};

} // namespace

std::int32_t vykel_initializePlugin() {
    return tell("initialize");
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    const std::int32_t answer = tell("getInterface", version);
    if (answer == Answer::Ordinary)
        *list = new List;
    return answer;
}

#ifndef FAKE_WITHOUT_FINALIZE
std::int32_t vykel_finalizePlugin() {
    return tell("finalize");
}
#endif
