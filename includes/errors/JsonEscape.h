#ifndef ERRORS_JSONESCAPE_H
#define ERRORS_JSONESCAPE_H

#include <cstddef>
#include <cstdint>

/// The escapes in the strings of a JSON text.
namespace vyerr {

/// The value of the four hex digits before `end`, or -1. The text's NUL is no hex digit and stops it, too.
std::int32_t jsonHexQuad(const char* digits, const char* end) noexcept;

/// Decodes the character at the front of an escaped body into 1 to 4 bytes. Returns the place behind it, or
/// null at a bad or cut-off escape or a NUL.
const char* decodeJsonCharacter(const char* at, const char* end, char* out, std::size_t& outLength) noexcept;

/// Decodes `length` bytes of a string's escaped body; `destination` needs length + 1 bytes. Returns the
/// destination's terminating NUL, or null at a bad escape, with the text before it kept.
char* unescapeJsonString(const char* body, std::int64_t length, char* destination) noexcept;

} // namespace vyerr

#endif
