#include "vysys/windowsRegistry.h"

#include "errors/OsError.h"

namespace vysys {

namespace {

constexpr vyerr::RaiseSite countSite{__FILE__, 21};
constexpr vyerr::RaiseSite nameSite{__FILE__, 58};
constexpr vyerr::RaiseSite openSite{__FILE__, 91};
// The reading of values was in another unit when this site got its number.
constexpr vyerr::RaiseSite valueSite{"includes/vysys/stdpath.cpp", 246};
constexpr DWORD nameUnits = 256; // the longest name the system allows, and its terminator
constexpr DWORD firstValueBytes = 512;

/// Records the failure of a registry call.
void recordRegistryError(vyerr::Status& status, vyerr::RaiseSite site, LSTATUS error,
                         const char* description) noexcept {
    vyerr::ErrorInfo info(status, vykel::toInteger(vykel::StatusCode::ResourceNotFound),
                          vyerr::constant::resourceNotFound, site);
    addWin32Error(info, static_cast<DWORD>(error));
    info.openObject("vysys_debug").addString("desc", description).closeObject();
}

} // namespace

RegistryKey::~RegistryKey() {
    if (opened)
        RegCloseKey(handle);
}

RegistryKey openKey(const Utf16String& keyPath, vyerr::Status& status) noexcept {
    HKEY handle = nullptr;
    const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, KEY_READ, &handle);
    if (error != ERROR_SUCCESS)
        recordRegistryError(status, openSite, error, "RegOpenKeyEx failed");
    return {handle, error == ERROR_SUCCESS};
}

std::uint32_t countSubkeys(const char* keyPath, vyerr::Status& status) noexcept {
    Utf16String path;
    utf8ToUtf16(keyPath, path, status);
    if (status.code < 0)
        return 0;
    const RegistryKey key = openKey(path, status);
    if (!key.opened)
        return 0;
    DWORD count = 0;
    const LSTATUS error = RegQueryInfoKeyW(key.handle, nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                                           nullptr, nullptr, nullptr, nullptr, nullptr);
    if (error != ERROR_SUCCESS) {
        recordRegistryError(status, countSite, error, "RegQueryValue failed");
        return 0;
    }
    return count;
}

void getSubkeyName(const char* keyPath, std::uint32_t index, Utf8Vector& name,
                   vyerr::Status& status) noexcept {
    Utf16String path;
    Utf16String buffer;
    utf8ToUtf16(keyPath, path, status);
    if (!buffer.resize(nameUnits, status))
        return;
    const RegistryKey key = openKey(path, status);
    if (!key.opened)
        return;
    DWORD length = nameUnits;
    const LSTATUS error =
        RegEnumKeyExW(key.handle, index, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (error != ERROR_SUCCESS) {
        recordRegistryError(status, nameSite, error, "RegEnumKey failed");
        return;
    }
    utf16ToUtf8(buffer.begin(), buffer.begin() + length, name, status);
}

void readStringValue(const char* keyPath, const char* valueName, Utf8Vector& value,
                     vyerr::Status& status) noexcept {
    Utf16String path;
    Utf16String name;
    Utf16String data;
    utf8ToUtf16(keyPath, path, status);
    utf8ToUtf16(valueName, name, status);
    readStringValue(path, name, data, status);
    utf16ToUtf8(data.begin(), data.end(), value, status); // does nothing after an error
}

void readStringValue(const Utf16String& keyPath, const Utf16String& valueName, Utf16String& value,
                     vyerr::Status& status) noexcept {
    if (status.code < 0)
        return;
    const RegistryKey key = openKey(keyPath, status);
    if (!key.opened)
        return;
    DWORD bytes = firstValueBytes;
    DWORD offered = 0;
    LSTATUS error = ERROR_SUCCESS;
    do {
        offered = bytes;
        // Rounded up, so that the buffer is not smaller than the size that the call is given.
        if (!value.resize(bytes / 2 + bytes % 2, status))
            return;
        error = RegQueryValueExW(key.handle, valueName.c_str(), nullptr, nullptr,
                                 reinterpret_cast<BYTE*>(value.data()), &bytes);
    } while (error == ERROR_MORE_DATA && bytes > offered); // a size that does not grow would repeat for ever
    if (error == ERROR_SUCCESS)
        value.resize(bytes / 2, status);
    else
        recordRegistryError(status, valueSite, error, "RegQueryValue failed");
}

} // namespace vysys
