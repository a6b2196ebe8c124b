#ifndef VYKELDEV_SYSTEM_TEXT_H
#define VYKELDEV_SYSTEM_TEXT_H

#include <ctime>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

namespace vykeldev {

/// Text as the wide-character functions of Windows take it.
using WideString = std::basic_string<WCHAR>;

/// The path that `call` writes into a buffer of a given size and returns the length of, as many functions of
/// Windows do; empty with the system's last error set when it fails.
template <class Call>
WideString pathFrom(Call call) {
    WideString path(32768, WCHAR{0}); // no path is longer
    const DWORD length = call(path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    return path;
}

/// The system cannot convert a text, because memory is short or the text is too long. Its own text has only
/// printable characters: printable() would fail, too.
class ConversionError : public std::runtime_error {
public:
    explicit ConversionError(DWORD systemError);
    const DWORD code; ///< The system's error.
};

/// Conversions between UTF-8 and UTF-16. What is malformed becomes U+FFFD. Both throw ConversionError and
/// never return an empty text instead: as the name of a registry key, that would mean the key above.
WideString toWide(std::string_view utf8);
std::string toUtf8(const WideString& wide);

/// Whether a text is valid UTF-8.
bool isUtf8(std::string_view text) noexcept;

/// The texts, one after the other, with `separator` between them.
std::string joined(const std::vector<std::string>& texts, const char* separator);

/// The parts, such as texts and numbers, as one text.
template <class... Parts>
std::string concat(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

/// A time as in "2026-11-26T09:05:00Z".
std::string utcText(std::time_t time);

/// `text` without white space at its end.
std::string trimmed(std::string text);

} // namespace vykeldev

#endif
