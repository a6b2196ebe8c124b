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
    WideString wideText(utf8.size(), 0); // a byte gives one unit at most
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wideText.data(), size);
    if (length == 0)
        throw ConversionError(GetLastError());
    wideText.resize(static_cast<std::size_t>(length));
    return wideText;
}

std::string toUtf8(const WideString& wideText) {
    if (wideText.empty())
        return {};
    const int size = static_cast<int>(wideText.size());
    std::string utf8(3 * wideText.size(), '\0'); // a unit gives three bytes at most
    const int length = WideCharToMultiByte(CP_UTF8, 0, wideText.data(), size, utf8.data(),
                                           static_cast<int>(utf8.size()), nullptr, nullptr);
    if (length == 0)
        throw ConversionError(GetLastError());
    utf8.resize(static_cast<std::size_t>(length));
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

} // namespace vykeldev
