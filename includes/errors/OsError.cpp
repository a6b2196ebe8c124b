#include "errors/OsError.h"

#include "vybase/owners.h"

namespace vyerr {

namespace {

/// The system's text for an error; null when it has none.
vybase::LocalMemory<char> systemMessage(DWORD error) noexcept {
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    constexpr DWORD neutralDefaultLanguage = 0x0400;
    char* text = nullptr;
    // When the call allocates the buffer, it takes the address of a pointer in place of the buffer.
    if (FormatMessageA(flags, nullptr, error, neutralDefaultLanguage, reinterpret_cast<char*>(&text), 0,
                       nullptr) == 0)
        return nullptr;
    return vybase::LocalMemory<char>(text);
}

} // namespace

void addWin32Error(ErrorInfo& info, DWORD error) noexcept {
    info.openObject("internal_error").addString("api", "win32").addUInt("code", error);
    if (const auto message = systemMessage(error))
        info.addString("string", message.get());
    info.closeObject();
}

void addHresult(ErrorInfo& info, HRESULT result) noexcept {
    info.openObject("internal_error").addString("api", "hresult").addInt("code", result).closeObject();
}

} // namespace vyerr
