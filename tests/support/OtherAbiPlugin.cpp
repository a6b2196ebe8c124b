// A plug-in of one device in the ABI of the other Windows compiler, without any C or C++ library.
#include "vykel/PluginEntryPoints.h"

using vykel::IDevice;
using vykel::StatusBlock;

extern "C" int _fltused = 0;
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

class Device final : public IDevice {
public:
    std::int32_t getVersion() override { return 3; }
    const char* getPersistentToken(std::uint32_t format) override {
        return format == 2 ? "other-2" : "other-1";
    }
    std::uint32_t getSortKey() override { return 5; }
    void setNumber(std::uint32_t given, StatusBlock*) override { number = given; }
    std::uint32_t getNumber() override { return number; }
    const char* getAlias() override { return alias; }
    void setAlias(const char* text, std::int32_t, std::int32_t, StatusBlock*) override { alias = text; }

private:
    std::uint32_t number = vykel::noDeviceNumber;
    const char* alias = "";
} device;

class List final : public vykel::IDeviceList {
public:
    std::int32_t getVersion() override { return 0; }
    bool isStale() override { return false; }
    void refresh(StatusBlock*) override { count = 1; }
    std::uint32_t getCount() override { return count; }
    IDevice* getDevice(std::uint32_t, std::int32_t, StatusBlock*) override { return &device; }
    void release() override {}
    void attach(std::uint64_t given, StatusBlock* status) override { status->code = given == 7 ? 0 : -7; }
    void detach(std::uint64_t) override {}

private:
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
