#include "vydynlib/dynload.h"

#include "errors/OsError.h"
#include "vysys/textConversion.h"

namespace vydynlib {

namespace {

constexpr vyerr::RaiseSite loadSite{__FILE__, 94};
constexpr vyerr::RaiseSite symbolSite{__FILE__, 177};

void recordLoadError(vyerr::Status& status, vyerr::RaiseSite site, const char* subjectKey,
                     const char* subject, DWORD error) noexcept {
    vyerr::ErrorInfo info(status, vykel::toInteger(vykel::StatusCode::InvalidParameter),
                          vyerr::constant::invalidParameter, site);
    info.openObject("vydynlib_debug")
        .addString("debug", "failed to vydynlib_load library")
        .addString(subjectKey, subject)
        .closeObject();
    vyerr::addWin32Error(info, error);
}

} // namespace

HMODULE loadLibrary(const char* path, vyerr::Status& status) noexcept {
    vysys::Utf16String widePath;
    vysys::utf8ToUtf16(path, widePath, status);
    if (status.code < 0)
        return nullptr;
    const HMODULE module = LoadLibraryExW(widePath.c_str(), nullptr, 0);
    if (module == nullptr)
        recordLoadError(status, loadSite, "path", path, GetLastError());
    return module;
}

FARPROC getSymbol(HMODULE module, const char* name, vyerr::Status& status) noexcept {
    if (status.code < 0)
        return nullptr;
    const FARPROC symbol = GetProcAddress(module, name);
    if (symbol == nullptr)
        recordLoadError(status, symbolSite, "vydynlib_symbol", name, GetLastError());
    return symbol;
}

void LibraryHandle::unload() noexcept {
    if (module != nullptr)
        FreeLibrary(module);
    module = nullptr;
}

} // namespace vydynlib
