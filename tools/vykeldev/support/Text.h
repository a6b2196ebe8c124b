#ifndef VYKELDEV_SUPPORT_TEXT_H
#define VYKELDEV_SUPPORT_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

namespace vykeldev {

/// Text as the wide-character functions of Windows take it.
using WideString = std::basic_string<WCHAR>;

/// Conversions between UTF-8 and UTF-16. What is malformed becomes U+FFFD.
WideString toWide(std::string_view utf8);
std::string toUtf8(const WideString& wide);

/// The texts, one after the other, with `separator` between them.
std::string joined(const std::vector<std::string>& texts, const char* separator);

/// `text` without white space at its end.
std::string trimmed(std::string text);

/// `text` as it may go to a terminal: control characters and changes of the writing direction become escapes,
/// malformed UTF-8 becomes U+FFFD.
std::string printable(std::string_view text);

/// Columns that a printable UTF-8 text takes on a terminal.
std::size_t displayWidth(std::string_view text);

} // namespace vykeldev

#endif
