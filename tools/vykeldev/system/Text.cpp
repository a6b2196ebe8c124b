#include "system/Text.h"

#include <string>

namespace vykeldev {

ConversionError::ConversionError(DWORD systemError)
    : std::runtime_error("the system cannot convert a text between UTF-8 and UTF-16: system error " +
                         std::to_string(systemError)),
      code(systemError) {}

WideString toWide(std::string_view utf8) {
    if (utf8.empty())
        return {};
    const int size = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    WideString wideText(static_cast<std::size_t>(length), 0);
    if (length == 0 || MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wideText.data(), length) == 0)
        throw ConversionError(GetLastError());
    return wideText;
}

std::string toUtf8(const WideString& wideText) {
    if (wideText.empty())
        return {};
    const int size = static_cast<int>(wideText.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, wideText.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    if (length == 0 ||
        WideCharToMultiByte(CP_UTF8, 0, wideText.data(), size, utf8.data(), length, nullptr, nullptr) == 0)
        throw ConversionError(GetLastError());
    return utf8;
}

bool isUtf8(std::string_view text) noexcept {
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

std::string joined(const std::vector<std::string>& texts, const char* separator) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : separator) + text;
    return result;
}

std::string utcText(std::time_t time) {
    char text[32] = {};
    std::tm parts = {};
    if (const std::tm* const utc = std::gmtime(&time)) // none for a year that has no four digits
        parts = *utc;
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

std::string trimmed(std::string text) {
    text.erase(text.find_last_not_of(" \t\r\n") + 1);
    return text;
}

std::string withoutInserts(std::string text) {
    if (const std::size_t at = text.find("%1"); at != std::string::npos)
        text.replace(at, 2, at == 0 ? "The file" : "the file");
    return text;
}

} // namespace vykeldev
