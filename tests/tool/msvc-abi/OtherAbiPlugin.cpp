// A plug-in of one device in the ABI of the other Windows compiler, without any C or C++ library.
#include "vykel/PluginEntryPoints.h"

using vykel::StatusBlock;

extern "C" int _purecall() {
    return 0;
}

alignas(16) static char storage[64]; // for the one list that is made

void* operator new(decltype(sizeof(0))) {
    return storage;
}
void operator delete(void*) noexcept {}
void operator delete(void*, decltype(sizeof(0))) noexcept {}

namespace {

struct Device final : vykel::IDevice {
    std::int32_t getVersion() override { return 0; }
    const char* getPersistentToken(std::uint32_t format) override {
        return format == 2 ? "other-2" : "other-1";
    }
    std::uint32_t getSortKey() override { return 5; }
    void setNumber(std::uint32_t given, StatusBlock*) override { number = given; }
    std::uint32_t getNumber() override { return number; }
    const char* getAlias() override { return ""; }
    void setAlias(const char*, std::int32_t, std::int32_t, StatusBlock*) override {}

    std::uint32_t number = vykel::noDeviceNumber;
} device;

struct List final : vykel::IDeviceList {
    std::int32_t getVersion() override { return 0; }
    bool isStale() override { return count == 0; }
    void refresh(StatusBlock*) override { count = 1; }
    std::uint32_t getCount() override { return count; }
    vykel::IDevice* getDevice(std::uint32_t, std::int32_t, StatusBlock*) override { return &device; }
    void release() override {}
    void attach(std::uint64_t, StatusBlock*) override {}
    void detach(std::uint64_t) override {}

    std::uint32_t count = 0;
};

} // namespace

std::int32_t vykel_initializePlugin() {
    return 0;
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    *list = new List;
    return version;
}

std::int32_t vykel_finalizePlugin() {
    return 0;
}
