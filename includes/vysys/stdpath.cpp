#include "vysys/stdpath.h"

#include "errors/OsError.h"
#include "vysys/windowsRegistry.h"
#include <new>
#include <shlobj.h>

namespace vysys {

namespace {

constexpr vyerr::RaiseSite readValueSite{__FILE__, 246};
constexpr vyerr::RaiseSite folderSite{__FILE__, 283};

constexpr std::size_t longestPath = 260;
constexpr DWORD firstValueBytes = 512;
constexpr const char* makersFolder = "\\Morvance";

bool isSpace(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

} // namespace

void getFolderPath(Utf16String& buffer, vyerr::Status& status) noexcept {
    if (!buffer.resize(0, status) || !buffer.resize(longestPath, status))
        return;
    const HRESULT result =
        SHGetFolderPathW(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT, buffer.data());
    if (result == S_OK)
        return;
    vyerr::ErrorInfo info(status, vykel::toInteger(vykel::StatusCode::ResourceNotFound),
                          vyerr::constant::resourceNotFound, folderSite);
    addHresult(info, result);
    info.openObject("vysys_debug").addString("desc", "SHGetFolderPathW failed").closeObject();
}

void getSharedDataFolder(std::string& folder, vyerr::Status& status) noexcept {
    if (status.code < 0)
        return;
    Utf16String buffer;
    getFolderPath(buffer, status);
    Utf8Vector text;
    utf16ToUtf8(buffer.begin(), buffer.end(), text, status);
    try {
        folder.assign(text.begin(), text.end());
        trimPath(folder);
        folder += makersFolder;
    } catch (const std::bad_alloc&) {
        vytpl::reportMemoryFull(status);
    }
}

void trimPath(std::string& path) noexcept {
    const auto isTrailing = [](char character) {
        return isSpace(character) || character == '\0' || character == '\\';
    };
    while (!path.empty() && isTrailing(path.back()))
        path.pop_back();
    std::size_t leading = 0;
    while (leading < path.size() && isSpace(path[leading]))
        ++leading;
    path.erase(0, leading);
}

void readStringValue(const Utf16String& keyPath, const Utf16String& valueName, Utf16String& data,
                     vyerr::Status& status) noexcept {
    if (status.code < 0)
        return;
    RegistryKey key;
    openKey(keyPath, key, status);
    if (!key.opened)
        return;
    DWORD bytes = firstValueBytes;
    LSTATUS error = ERROR_SUCCESS;
    do {
        // An odd size still gets a buffer that is no smaller than what is asked for.
        if (!data.resize(bytes / 2 + bytes % 2, status))
            return;
        error = RegQueryValueExW(key.handle, valueName.c_str(), nullptr, nullptr,
                                 reinterpret_cast<BYTE*>(data.data()), &bytes);
    } while (error == ERROR_MORE_DATA);
    if (error == ERROR_SUCCESS)
        data.resize(bytes / 2, status);
    else
        recordRegistryError(status, readValueSite, error, "RegQueryValue failed");
}

} // namespace vysys
