#ifndef INI_INIESCAPE_H
#define INI_INIESCAPE_H

#include "ini/IniMemory.h"

/// Arbitrary text in values. Neither the parser nor the writer knows of escapes; callers use these.
namespace vyini {

/// Writes a text so that it fits into one line within double quotes: \t, \n, \" and \\, other control
/// characters as \x and two hex digits, the rest unchanged. 0 and the new text in `out`, or IniMemoryFull and
/// `out` unchanged. Any thread.
int encodeIniValue(const char* text, IniString& out) noexcept;

/// Reads such a text back. A backslash before any other character is dropped, and so is one at the end; \x
/// without two hex digits is the letter x. \x00 gives a NUL, which ends the text for most readers. 0 and the
/// new text in `out`, or IniMemoryFull and `out` unchanged. Any thread.
int decodeIniValue(const char* text, IniString& out) noexcept;

} // namespace vyini

#endif
