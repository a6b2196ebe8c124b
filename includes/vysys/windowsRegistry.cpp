#include "vysys/windowsRegistry.h"

#include "errors/OsError.h"
#include "vysys/stdpath.h"

namespace vysys {

namespace {

constexpr vyerr::RaiseSite countSite{__FILE__, 21};
constexpr vyerr::RaiseSite nameSite{__FILE__, 58};
constexpr vyerr::RaiseSite openSite{__FILE__, 91};
constexpr DWORD nameUnits = 256; // the longest name the system allows, and its terminator

} // namespace

RegistryKey::~RegistryKey() {
    if (opened)
        RegCloseKey(handle);
}

void openKey(const Utf16String& keyPath, RegistryKey& key, vyerr::Status& status) noexcept {
    const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, KEY_READ, &key.handle);
    key.opened = error == ERROR_SUCCESS;
    if (!key.opened)
        recordRegistryError(status, openSite, error, "RegOpenKeyEx failed");
}

std::uint32_t countSubkeys(const char* keyPath, vyerr::Status& status) noexcept {
    Utf16String path;
    utf8ToUtf16(keyPath, path, status);
    if (status.code < 0)
        return 0;
    RegistryKey key;
    openKey(path, key, status);
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
    RegistryKey key;
    openKey(path, key, status);
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
    if (status.code >= 0)
        utf16ToUtf8(data.begin(), data.end(), value, status);
}

void recordRegistryError(vyerr::Status& status, vyerr::RaiseSite site, LSTATUS error,
                         const char* description) noexcept {
    if (status.code < 0)
        return;
    vyerr::ErrorInfo info(status, vykel::toInteger(vykel::StatusCode::ResourceNotFound),
                          vyerr::constant::resourceNotFound, site);
    addWin32Error(info, static_cast<DWORD>(error));
    info.openObject("vysys_debug").addString("desc", description).closeObject();
}

} // namespace vysys
