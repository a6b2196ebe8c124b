#ifndef ERRORS_JSONSTRING_H
#define ERRORS_JSONSTRING_H

#include <cstddef>
#include <cstdint>

/// Strings of a JSON text: how their characters are escaped, in both directions. Nothing here writes or
/// expects the quotes.
namespace vyerr {

/// The value of the four hex digits before `end`, or -1. Reads no byte after one that is not a hex digit, so
/// none after the text's NUL.
std::int32_t jsonHexQuad(const char* digits, const char* end) noexcept;

/// Decodes the first character of an escaped body into 1 to 4 bytes. Returns the place after it, or null at a
/// bad or cut-off escape or a NUL.
const char* decodeJsonCharacter(const char* at, const char* end, char* out, std::size_t& outLength) noexcept;

/// Decodes `length` bytes of a string's escaped body; `destination` needs length + 1 bytes. Returns the
/// destination's terminating NUL, or null at a bad escape; the destination then holds the text before it.
char* unescapeJsonString(const char* body, std::int64_t length, char* destination) noexcept;

/// Number of bytes that escapeJsonString writes for a text.
std::size_t escapedJsonLength(const char* text) noexcept;

/// Writes a text in escaped form, without a NUL. Returns the end of it.
char* escapeJsonString(char* destination, const char* text) noexcept;

} // namespace vyerr

#endif
