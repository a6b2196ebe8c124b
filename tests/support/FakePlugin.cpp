#include "errors/Exception.h"
#include "support/FakePlugins.h"
#include "vykel/PluginEntryPoints.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
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
using namespace vykeltest;

struct OwnType {};

/// The plug-in's name, and the test. The last that the plug-in reports is that it is unloaded.
struct Plugin {
    Plugin() {
        const char* const text = std::getenv(FakeHost::environmentVariable);
        void* address = nullptr;
        if (text == nullptr || std::sscanf(text, "%p", &address) != 1)
            std::abort();
        host = static_cast<FakeHost*>(address);
        HMODULE module = nullptr;
        WCHAR path[1024] = {};
        GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const WCHAR*>(this), &module);
        const WCHAR* const end = path + GetModuleFileNameW(module, path, 1024);
        // Only the name, without extension: a short text, so that this never needs memory.
        for (const WCHAR* at = path; at != end; ++at)
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

    FakeHost* host = nullptr;
    std::string name;
} plugin;

std::int32_t report(const char* operation, std::int64_t argument = -1) {
    static void (*const throwing[])() = {
        [] { throw std::bad_alloc(); },
        [] { throw std::invalid_argument("fake"); },
        [] { throw std::bad_cast(); },
        [] { throw std::system_error(std::make_error_code(std::errc::io_error)); },
        [] { throw std::logic_error("fake"); },
        [] { throw OwnType(); },
        [] {
            vyerr::raiseError(vykel::StatusCode::ConfigurationFault, "", {"plugin.cpp", 7});
        }};
    const Answer answer = plugin.host->call(plugin.name.c_str(), operation, argument);
    if (answer >= ThrowBadAlloc)
        throwing[answer - ThrowBadAlloc]();
    return answer;
}

std::int32_t report(const char* operation, std::int64_t argument, StatusBlock* status) {
    const std::int32_t answer = report(operation, argument);
    if (answer < 0 && status->code >= 0)
        status->code = answer;
    return answer;
}

class Device final : public IDevice {
public:
    Device(FakeDevice& fakeDevice, std::int64_t deviceIndex) : fake(fakeDevice), index(deviceIndex) {}

    std::int32_t getVersion() override { return fake.version; }
    const char* getPersistentToken(std::uint32_t) override { return plugin.name.c_str(); }
    std::uint32_t getSortKey() override {
        report("getSortKey", index);
        return fake.sortKey;
    }
    void setNumber(std::uint32_t number, StatusBlock* status) override {
        if (report("setNumber", index, status) >= 0)
            fake.number = number;
    }
    std::uint32_t getNumber() override {
        report("getNumber", index);
        return fake.number;
    }
    const char* getAlias() override { return fake.alias; }
    void setAlias(const char*, std::int32_t, std::int32_t, StatusBlock*) override {}

private:
    FakeDevice& fake;
    std::int64_t index;
};

class List final : public vykel::IDeviceList {
public:
    std::int32_t getVersion() override { return 0; }
    bool isStale() override { return report("isStale") == Yes; }
    void refresh(StatusBlock* status) override {
        devices.clear();
        report("refresh", -1, status);
        for (FakeDevice& fake : plugin.host->devices(plugin.name.c_str()))
            devices.emplace_back(fake, devices.size());
    }
    std::uint32_t getCount() override {
        report("getCount");
        return static_cast<std::uint32_t>(devices.size());
    }
    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion, StatusBlock* status) override {
        return report("getDevice", index, status) != 0 || minimumVersion != 0 ? nullptr : &devices[index];
    }
    void release() override {
        const std::unique_ptr<List> self(this);
        report("release");
    }
    void attach(std::uint64_t token, StatusBlock* status) override {
        report("attach", static_cast<std::int64_t>(token), status);
    }
    void detach(std::uint64_t token) override { report("detach", static_cast<std::int64_t>(token)); }

private:
    std::vector<Device> devices;
};

} // namespace

std::int32_t vykel_initializePlugin() {
    return report("initialize");
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    const std::int32_t answer = report("getInterface", version);
    if (answer == Ordinary || answer == Yes)
        *list = new List;
    return answer;
}

#ifndef FAKE_WITHOUT_FINALIZE
std::int32_t vykel_finalizePlugin() {
    return report("finalize");
}
#endif
