#ifndef VYSYS_TEXTCONVERSION_H
#define VYSYS_TEXTCONVERSION_H

#include "vytpl/StatusString.h"
#include "vytpl/StatusVector.h"
#include <windows.h>

/// Conversions between the UTF-8 of the library and the UTF-16 of the system. They validate nothing: they
/// convert overlong forms, lone surrogates and stray bytes in a fixed way and refuse no text. Any thread may
/// call.
namespace vysys {

/// A growable UTF-16 text for a call of the system.
using Utf16String = vytpl::StatusString<WCHAR>;
/// A growable UTF-8 text, without a NUL at its end.
using Utf8Vector = vytpl::StatusVector<char>;

/// Appends UTF-8 text to a UTF-16 string. Records MemoryFull when the string cannot grow.
void utf8ToUtf16(const char* begin, const char* end, Utf16String& out, vyerr::Status& status) noexcept;

/// The same, up to the text's terminating NUL.
void utf8ToUtf16(const char* text, Utf16String& out, vyerr::Status& status) noexcept;

/// Appends UTF-16 text to an 8-bit vector. Records MemoryFull when the vector cannot grow.
void utf16ToUtf8(const WCHAR* begin, const WCHAR* end, Utf8Vector& out, vyerr::Status& status) noexcept;

} // namespace vysys

#endif
