// A complete enumerator plug-in: the device, the list and the three entry points. It asks a DeviceStore for
// what a real plug-in asks its hardware or driver for.

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

/// The file name at the end of `path` in UTF-8, for messages.
std::string fileName(const Path& path) {
    const Path name = path.substr(path.find_last_of(Path(1, '\\') + static_cast<WCHAR>('/')) + 1);
    std::string text(3 * name.size(), '\0');
    text.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, name.c_str(), static_cast<int>(name.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

/// Stores an error, unless `status` holds one already: the first error wins. Only a block whose size says so
/// has the detail fields; the blocks of the library end after `code`.
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

/// Runs `work` and turns what it throws into a code, because no exception may leave a plug-in. The reason of
/// a StoreError goes to the debugger.
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
    Device(DeviceList& owner, DeviceEntry fields) noexcept : list(owner), entry(std::move(fields)) {}

    std::int32_t getVersion() noexcept override { return entry.version; }
    const char* getPersistentToken(std::uint32_t format) noexcept override {
        return (format == 2 ? entry.token2 : entry.token).c_str();
    }
    std::uint32_t getSortKey() noexcept override { return entry.sortKey; }
    void setNumber(std::uint32_t number, StatusBlock* status) noexcept override;
    std::uint32_t getNumber() noexcept override;
    const char* getAlias() noexcept override;
    void setAlias(const char* alias, std::int32_t one, std::int32_t zero,
                  StatusBlock* status) noexcept override;

    /// The persistent token in format 1.
    std::string_view token() const noexcept { return entry.token; }
    /// Takes over what another list or process has set.
    void apply(DeviceChange change) noexcept {
        if (change.number)
            entry.number = *change.number;
        if (change.alias)
            entry.alias = std::move(change.alias);
    }

private:
    DeviceList& list;
    DeviceEntry entry;
};

class DeviceList final : public IDeviceList {
public:
    explicit DeviceList(Path devicesFile) : store(std::move(devicesFile)) {}

    std::int32_t getVersion() noexcept override { return 0; }

    bool isStale() noexcept override { return !fresh || store.isFileChanged(); }

    void refresh(StatusBlock* status) noexcept override {
        fresh = false;
        guard(status, [this] {
            std::deque<Device> newDevices; // after a failure the list keeps its old devices
            std::unordered_map<std::string_view, Device*> newByToken;
            for (DeviceEntry& entry : store.load()) {
                Device& device = newDevices.emplace_back(*this, std::move(entry));
                newByToken.emplace(device.token(), &device);
            }
            devices.swap(newDevices);
            byToken.swap(newByToken);
            fresh = true;
        });
    }

    std::uint32_t getCount() noexcept override { return static_cast<std::uint32_t>(devices.size()); }

    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion,
                       StatusBlock* status) noexcept override {
        if (index >= devices.size()) {
            storeError(status, vykel::toInteger(StatusCode::InvalidParameter), "", 0);
            return nullptr;
        }
        if (devices[index].getVersion() < minimumVersion) {
            storeError(status, vykel::toInteger(StatusCode::VersionMismatch), "", 0);
            return nullptr;
        }
        return &devices[index];
    }

    void release() noexcept override {
        StatusBlock ignored = vykel::makeStatusBlock();
        guard(&ignored, [this] { store.fold(); });
        delete this;
    }

    // Simulated devices have nothing to attach a token to.
    void attach(std::uint64_t, StatusBlock*) noexcept override {}
    void detach(std::uint64_t) noexcept override {}

    /// Runs `work` and turns what it throws into a code.
    template <class Work>
    void guard(StatusBlock* status, Work&& work) noexcept {
        reportInto(status, store.path, std::forward<Work>(work));
    }

    /// Applies what other lists and processes have set. When that fails, the devices stay as they are.
    void takeChanges() noexcept {
        StatusBlock ignored = vykel::makeStatusBlock();
        guard(&ignored, [this] {
            for (DeviceChange& change : store.readChanges()) {
                const auto found = byToken.find(change.token);
                if (found != byToken.end())
                    found->second->apply(std::move(change));
            }
        });
    }

    /// Keeps a change of one device for good. Throws as DeviceStore::append does.
    void keep(const DeviceChange& change) { store.append(change); }

private:
    ~DeviceList() override = default; // only release() may destroy a list

    DeviceStore store;
    std::deque<Device> devices;
    std::unordered_map<std::string_view, Device*> byToken; ///< the keys point into the devices
    bool fresh = false;                                    ///< the last refresh succeeded
};

void Device::setNumber(std::uint32_t number, StatusBlock* status) noexcept {
    list.guard(status, [&] {
        list.keep({entry.token, number, {}});
        entry.number = number;
    });
}

std::uint32_t Device::getNumber() noexcept {
    list.takeChanges();
    return entry.number;
}

const char* Device::getAlias() noexcept {
    list.takeChanges();
    return entry.alias ? entry.alias->c_str() : nullptr;
}

void Device::setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock* status) noexcept {
    if (alias == nullptr || !entry.alias) { // this device takes no alias
        storeError(status, vykel::toInteger(StatusCode::InvalidParameter), "", 0);
        return;
    }
    list.guard(status, [&] {
        DeviceChange change{entry.token, {}, alias};
        list.keep(change);
        entry.alias.swap(change.alias); // a swap cannot fail, so the device shows what is kept
    });
}

/// The path of this library, with the extension `.devices`. Throws StoreError: without a folder it would name
/// a file of the client's working folder.
Path devicesFile() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&vykel_initializePlugin), &self);
    Path path(32768, 0); // the longest path of Windows
    const DWORD length = GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size()));
    if (self == nullptr || length == 0 || length >= path.size())
        throw StoreError(Code::PathUnknown, 0, "the system does not say where this library is");
    path.resize(length);
    path.resize(std::min(path.find_last_of(static_cast<WCHAR>('.')), path.size()));
    return path + ".devices";
}

} // namespace
} // namespace simulated

// Lists share nothing, so there is nothing to prepare and nothing to clean up.
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
    } catch (const simulated::StoreError& error) {
        OutputDebugStringA((std::string("simulated: ") + error.what() + "\n").c_str());
        return static_cast<std::int32_t>(error.code);
    } catch (const std::bad_alloc&) {
        return vykel::toInteger(vykel::StatusCode::MemoryFull);
    } catch (...) {
        return vykel::toInteger(vykel::StatusCode::GeneralFault);
    }
}

std::int32_t vykel_finalizePlugin() {
    return 0;
}
