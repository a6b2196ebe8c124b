#ifndef INI_INIESCAPE_H
#define INI_INIESCAPE_H

#include "ini/IniMemory.h"

/// Arbitrary text in values. Neither the parser nor the writer knows of escapes; callers use these.
namespace vyini {

/// Writes a text so that it fits into one line within double quotes: \t, \n, \" and \\, other control
/// characters as \x and two hex digits, the rest unchanged. Returns 0 with the new text in `out`, or
/// IniMemoryFull with `out` unchanged. A null text is an empty one. Any thread may call.
int encodeIniValue(const char* text, IniString& out) noexcept;

/// Reads such a text back. A backslash before any other character is dropped, and so is one at the end; \x
/// without two hex digits is the letter x. \x00 gives a NUL, which ends the text for most readers. Returns 0
/// with the new text in `out`, or IniMemoryFull with `out` unchanged. A null text is an empty one. Any thread
/// may call.
int decodeIniValue(const char* text, IniString& out) noexcept;

} // namespace vyini

#endif
