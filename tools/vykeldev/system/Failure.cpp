#include "system/Failure.h"

#include "system/System.h"
#include "system/Text.h"
#include "vybase/owners.h"

namespace vykeldev {

std::string systemErrorText(DWORD error) {
    LPWSTR message = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                            FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, reinterpret_cast<LPWSTR>(&message), 0, nullptr);
    const vybase::LocalMemory<WCHAR> owner(message);
    std::string text = trimmed(toUtf8(WideString(message, length)));
    if (const std::size_t at = text.find("%1"); at != std::string::npos) // the place of a file name
        text.replace(at, 2, at == 0 ? "The file" : "the file");
    return text;
}

Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy) {
    return {action + " failed with system error " + std::to_string(error), systemErrorText(error),
            error == ERROR_ACCESS_DENIED ? "Run the tool as administrator." : remedy};
}

} // namespace vykeldev
