#include "vysys/stdpath.h"

#include "errors/OsError.h"
#include "vysys/textConversion.h"
#include <new>
#include <shlobj.h>

namespace vysys {

namespace {

constexpr vyerr::RaiseSite folderSite{__FILE__, 283};

constexpr std::size_t maxPathUnits = 260;
constexpr const char* makersFolder = "\\Morvance";

bool isSpace(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// Asks the system for the folder of data common to all users. The call needs a buffer of 260 units. Records
/// ResourceNotFound or MemoryFull.
void getFolderPath(Utf16String& buffer, vyerr::Status& status) noexcept {
    if (!buffer.resize(maxPathUnits, status))
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

} // namespace

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

} // namespace vysys
