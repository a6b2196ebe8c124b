// An enumerator plug-in whole: the device, the list, the three entry points. What a real one would ask its
// hardware or driver for, this one asks a DeviceStore.

#include "DeviceStore.h"
#include "vykel/PluginEntryPoints.h"
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace simulated {
namespace {

using vykel::IDevice;
using vykel::IDeviceList;
using vykel::StatusBlock;
using vykel::StatusCode;

/// The UTF-8 file name at the end of `path`, for messages; empty when memory is short.
std::string fileName(const Path& path) {
    const Path name = path.substr(path.find_last_of(Path(1, '\\') + static_cast<WCHAR>('/')) + 1);
    std::string text(3 * name.size(), '\0');
    text.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, name.c_str(), static_cast<int>(name.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

/// Stores an error, unless `status` holds one: the first wins. The detail fields exist only in a block that
/// says that it is large enough; the blocks of the library end behind `code`.
void storeError(StatusBlock* status, std::int32_t code, std::string_view file, std::size_t line) noexcept {
    if (status->code < 0)
        return;
    status->code = code;
    if (status->structSize < sizeof(StatusBlock))
        return;
    std::memset(status->component, 0, sizeof status->component);
    std::memcpy(status->component, "simulated", sizeof "simulated" - 1);
    std::memset(status->file, 0, sizeof status->file);
    std::memcpy(status->file, file.data(), std::min(file.size(), sizeof status->file - 1));
    status->line = static_cast<std::uint32_t>(line);
    status->reserved = 0;
}

/// Runs `work` and turns whatever it throws into a code, told to the debugger too: no exception may leave a
/// plug-in.
template <class Work>
void reportInto(StatusBlock* status, const Path& path, Work&& work) noexcept {
    try {
        try {
            work();
        } catch (const StoreError& error) {
            const std::string file = fileName(path);
            storeError(status, static_cast<std::int32_t>(error.code), file, error.line);
            const std::string place = error.line == 0 ? "" : ":" + std::to_string(error.line);
            OutputDebugStringA((file + place + ": " + error.what() + "\n").c_str());
        }
    } catch (const std::bad_alloc&) {
        storeError(status, vykel::toInteger(StatusCode::MemoryFull), "", 0);
    } catch (...) {
        storeError(status, vykel::toInteger(StatusCode::GeneralFault), "", 0);
    }
}

class DeviceList;

class Device final : public IDevice {
public:
    // cppcheck-suppress passedByValue ; it is moved
    Device(DeviceList& list, DeviceEntry entry) noexcept : list_(list), entry_(std::move(entry)) {}

    std::int32_t getVersion() noexcept override { return entry_.version; }
    const char* getPersistentToken(std::uint32_t format) noexcept override {
        return (format == 2 ? entry_.token2 : entry_.token).c_str();
    }
    std::uint32_t getSortKey() noexcept override { return entry_.sortKey; }
    void setNumber(std::uint32_t number, StatusBlock* status) noexcept override;
    std::uint32_t getNumber() noexcept override;
    const char* getAlias() noexcept override;
    void setAlias(const char* alias, std::int32_t one, std::int32_t zero,
                  StatusBlock* status) noexcept override;

    std::string_view token() const noexcept { return entry_.token; }
    void apply(DeviceChange change) noexcept {
        if (change.number)
            entry_.number = *change.number;
        if (change.alias)
            entry_.alias = std::move(change.alias);
    }

private:
    DeviceList& list_;
    DeviceEntry entry_;
};

class DeviceList final : public IDeviceList {
public:
    explicit DeviceList(Path devicesFile) : store_(std::move(devicesFile)) {}

    std::int32_t getVersion() noexcept override { return 0; }

    bool isStale() noexcept override { return !fresh_ || store_.isFileChanged(); }

    void refresh(StatusBlock* status) noexcept override {
        fresh_ = false;
        guard(status, [this] {
            std::deque<Device> devices; // built aside: after a failure the old devices stand
            std::unordered_map<std::string_view, Device*> byToken;
            for (DeviceEntry& entry : store_.load()) {
                Device& device = devices.emplace_back(*this, std::move(entry));
                byToken.emplace(device.token(), &device);
            }
            devices_.swap(devices);
            byToken_.swap(byToken);
            fresh_ = true;
        });
    }

    std::uint32_t getCount() noexcept override { return static_cast<std::uint32_t>(devices_.size()); }

    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion,
                       StatusBlock* status) noexcept override {
        if (index >= devices_.size()) {
            storeError(status, vykel::toInteger(StatusCode::InvalidParameter), "", 0);
            return nullptr;
        }
        if (devices_[index].getVersion() < minimumVersion) {
            storeError(status, vykel::toInteger(StatusCode::VersionMismatch), "", 0);
            return nullptr;
        }
        return &devices_[index];
    }

    void release() noexcept override {
        StatusBlock nobodyLooks = vykel::makeStatusBlock();
        guard(&nobodyLooks, [this] { store_.fold(); });
        delete this;
    }

    // Simulated devices have nothing to attach a token to.
    void attach(std::uint64_t, StatusBlock*) noexcept override {}
    void detach(std::uint64_t) noexcept override {}

    /// Runs `work` and turns whatever it throws into a code.
    template <class Work>
    void guard(StatusBlock* status, Work&& work) noexcept {
        reportInto(status, store_.path(), std::forward<Work>(work));
    }

    /// Takes over what other lists and processes have set. When that fails the devices keep what they know.
    void takeChanges() noexcept {
        StatusBlock nobodyLooks = vykel::makeStatusBlock();
        guard(&nobodyLooks, [this] {
            for (DeviceChange& change : store_.readChanges()) {
                const auto found = byToken_.find(change.token);
                if (found != byToken_.end())
                    found->second->apply(std::move(change));
            }
        });
    }

    /// Keeps a change of one device for good. Throws as DeviceStore::append does.
    void keep(const DeviceChange& change) { store_.append(change); }

private:
    ~DeviceList() override = default; // only release() ends a list

    DeviceStore store_;
    std::deque<Device> devices_;
    std::unordered_map<std::string_view, Device*> byToken_; // keys are the devices' tokens
    bool fresh_ = false;
};

void Device::setNumber(std::uint32_t number, StatusBlock* status) noexcept {
    list_.guard(status, [&] {
        list_.keep({entry_.token, number, {}});
        entry_.number = number;
    });
}

std::uint32_t Device::getNumber() noexcept {
    list_.takeChanges();
    return entry_.number;
}

const char* Device::getAlias() noexcept {
    list_.takeChanges();
    return entry_.alias ? entry_.alias->c_str() : nullptr;
}

void Device::setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock* status) noexcept {
    if (alias == nullptr || !entry_.alias) { // this device takes none
        storeError(status, vykel::toInteger(StatusCode::InvalidParameter), "", 0);
        return;
    }
    list_.guard(status, [&] {
        DeviceChange change{entry_.token, {}, alias};
        list_.keep(change);
        entry_.alias.swap(change.alias); // cannot fail: what is kept is also shown
    });
}

/// The file beside this library, with its name and the extension `.devices`.
Path devicesFile() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&vykel_initializePlugin), &self);
    Path path(32768, 0); // no path is longer
    path.resize(GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size())));
    path.resize(std::min(path.find_last_of(static_cast<WCHAR>('.')), path.size()));
    return path + ".devices";
}

} // namespace
} // namespace simulated

// Nothing is prepared and nothing kept between lists, so there is nothing to undo either.
std::int32_t vykel_initializePlugin() {
    return 0;
}

std::int32_t vykel_getPluginInterface(std::int32_t version, vykel::IDeviceList** list) {
    if (list == nullptr)
        return vykel::toInteger(vykel::StatusCode::InvalidParameter);
    if (version != 0)
        return vykel::toInteger(vykel::StatusCode::VersionMismatch);
    try {
        *list = new simulated::DeviceList(simulated::devicesFile());
        return 0;
    } catch (const std::bad_alloc&) {
        return vykel::toInteger(vykel::StatusCode::MemoryFull);
    } catch (...) {
        return vykel::toInteger(vykel::StatusCode::GeneralFault);
    }
}

std::int32_t vykel_finalizePlugin() {
    return 0;
}
