#ifndef VYKELDEV_SYSTEM_DISPLAYTEXT_H
#define VYKELDEV_SYSTEM_DISPLAYTEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <windows.h>

/// Texts of any origin on a terminal.
namespace vykeldev {

/// `text` as it may go to a terminal: control characters, ends of lines and changes of the writing direction
/// become escapes, but `kept` stays; malformed UTF-8 becomes U+FFFD.
std::string printable(std::string_view text, WCHAR kept = WCHAR{0xFFFF});

/// Columns that a printable UTF-8 text takes on a terminal.
std::size_t displayWidth(std::string_view text);

} // namespace vykeldev

#endif
