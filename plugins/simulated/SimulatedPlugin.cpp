// A complete enumerator plug-in: the device, the list and the three entry points. It asks a DevicesFile for
// what a real plug-in asks its hardware or driver for.

#include "DevicesFile.h"
#include "NumberStore.h"
#include "PluginError.h"
#include "vykel/PluginEntryPoints.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <new>
#include <optional>
#include <shlobj.h>
#include <string>
#include <string_view>
#include <utility>

namespace simulated {
namespace {

using vykel::IDevice;
using vykel::IDeviceList;
using vykel::StatusBlock;
using vykel::StatusCode;

/// The file name at the end of `path`.
Path fileName(const Path& path) {
    return path.substr(path.find_last_of(Path(1, '\\') + static_cast<WCHAR>('/')) + 1);
}

std::string toUtf8(const Path& path) {
    std::string text(3 * path.size(), '\0');
    text.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, path.c_str(), static_cast<int>(path.size()), text.data(),
                            static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

/// Stores a code unless `status` holds one that must stay: the first error wins, and a warning replaces
/// nothing. Only a block whose size says so has the detail fields; the blocks of the library end after
/// `code`.
void storeCode(StatusBlock* status, std::int32_t code, std::string_view file = "",
               std::size_t line = 0) noexcept {
    if (status->code < 0 || (status->code > 0 && code > 0))
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

void storeCode(StatusBlock* status, StatusCode code) noexcept {
    storeCode(status, vykel::toInteger(code));
}

/// Stores an error as `code`, and tells the debugger the reason.
void report(StatusBlock* status, const PluginError& error, std::int32_t code) {
    const std::string file = toUtf8(fileName(error.file));
    storeCode(status, code, file, error.line);
    const std::string place = error.line == 0 ? "" : ":" + std::to_string(error.line);
    OutputDebugStringA((file + place + ": " + error.what() + "\n").c_str());
}

/// Runs `work` and turns what it throws into a code, because no exception may leave a plug-in.
template <class Work>
void guard(StatusBlock* status, Work&& work) noexcept {
    try {
        try {
            work();
        } catch (const PluginError& error) {
            report(status, error, static_cast<std::int32_t>(error.code));
        }
    } catch (const std::bad_alloc&) {
        storeCode(status, StatusCode::MemoryFull);
    } catch (...) {
        storeCode(status, StatusCode::GeneralFault);
    }
}

class Device final : public IDevice {
public:
    // cppcheck-suppress passedByValue ; it is moved
    Device(NumberStore& numbers, DeviceEntry fields) noexcept : store(numbers), entry(std::move(fields)) {}

    std::int32_t getVersion() noexcept override { return entry.version; }
    const char* getPersistentToken(std::uint32_t format) noexcept override {
        return (format == 2 ? entry.token2 : entry.token).c_str();
    }
    std::uint32_t getSortKey() noexcept override { return entry.sortKey; }

    void setNumber(std::uint32_t number, StatusBlock* status) noexcept override {
        if (number == vykel::noDeviceNumber)
            return storeCode(status, StatusCode::InvalidParameter);
        guard(status, [&] { store.append({entry.token, "", 0, 0, number, std::nullopt}); });
    }
    std::uint32_t getNumber() noexcept override {
        takeKept();
        return entry.number;
    }

    const char* getAlias() noexcept override {
        takeKept();
        return entry.alias ? entry.alias->c_str() : nullptr;
    }
    void setAlias(const char* alias, std::int32_t, std::int32_t, StatusBlock* status) noexcept override {
        if (alias == nullptr || !entry.alias) // this device takes no alias
            return storeCode(status, StatusCode::InvalidParameter);
        guard(status, [&] { store.append({entry.token, "", 0, 0, vykel::noDeviceNumber, alias}); });
    }

private:
    /// Takes over what any list and process has set. Changes no other device: its texts must stay.
    void takeKept() noexcept {
        const DeviceEntry* const kept = store.find(entry.token);
        if (kept == nullptr)
            return;
        if (kept->number != vykel::noDeviceNumber)
            entry.number = kept->number;
        try {
            if (entry.alias && kept->alias)
                entry.alias = kept->alias;
        } catch (const std::bad_alloc&) { // it keeps showing the old one
        }
    }

    NumberStore& store;
    DeviceEntry entry;
};

class DeviceList final : public IDeviceList {
public:
    DeviceList(Path devicesFile, Path sharedFolder, const Path& numbersFile)
        : file(std::move(devicesFile)), store(std::move(sharedFolder), numbersFile) {}

    std::int32_t getVersion() noexcept override { return 0; }

    bool isStale() noexcept override { return !fresh || file.isChanged(); }

    void refresh(StatusBlock* status) noexcept override {
        fresh = false;
        guard(status, [&] {
            std::deque<Device> found; // after a failure the list keeps its old devices
            for (DeviceEntry& entry : file.read())
                found.emplace_back(store, std::move(entry));
            try {
                store.load();
            } catch (const PluginError& error) { // the devices can be used all the same
                report(status, error, -static_cast<std::int32_t>(error.code));
            }
            devices.swap(found);
            fresh = true;
        });
    }

    std::uint32_t getCount() noexcept override { return static_cast<std::uint32_t>(devices.size()); }

    IDevice* getDevice(std::uint32_t index, std::int32_t minimumVersion,
                       StatusBlock* status) noexcept override {
        if (index >= devices.size()) {
            storeCode(status, StatusCode::InvalidParameter);
            return nullptr;
        }
        if (devices[index].getVersion() < minimumVersion) {
            storeCode(status, StatusCode::VersionMismatch);
            return nullptr;
        }
        return &devices[index];
    }

    void release() noexcept override { delete this; }

    // Simulated devices have nothing to attach a token to.
    void attach(std::uint64_t, StatusBlock*) noexcept override {}
    void detach(std::uint64_t) noexcept override {}

private:
    ~DeviceList() override = default; // only release() may destroy a list

    DevicesFile file;
    NumberStore store;
    std::deque<Device> devices;
    bool fresh = false; ///< the last refresh succeeded
};

/// The path of this library without extension. Throws PluginError: without a folder it would name a file of
/// the client's working folder.
Path libraryPath() {
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&vykel_initializePlugin), &self);
    Path path(32768, 0); // the longest path of Windows
    const DWORD length = GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size()));
    if (self == nullptr || length == 0 || length >= path.size())
        throw PluginError(Code::PathUnknown, {}, 0, "the system does not say where this library is");
    path.resize(length);
    const std::size_t dot = fileName(path).find_last_of(static_cast<WCHAR>('.')); // not one of a folder
    if (dot != Path::npos)
        path.resize(path.size() - fileName(path).size() + dot);
    return path;
}

/// The folder that all users of the library share, or an empty path. `vykeldev setup` makes it, never a
/// plug-in: it would give it the wrong rights.
Path sharedFolder() {
    std::array<WCHAR, MAX_PATH> folder = {};
    if (SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder.data()) != S_OK)
        return {};
    return Path(folder.data()) + "\\Morvance\\VY-KEL\\";
}

IDeviceList* makeList() {
    const Path library = libraryPath();
    return new DeviceList(library + ".devices", sharedFolder(), fileName(library) + ".numbers");
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
    vykel::StatusBlock status = vykel::makeStatusBlock();
    simulated::guard(&status, [&] { *list = simulated::makeList(); });
    return status.code;
}

std::int32_t vykel_finalizePlugin() {
    return 0;
}
