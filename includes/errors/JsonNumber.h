#ifndef ERRORS_JSONNUMBER_H
#define ERRORS_JSONNUMBER_H

#include "errors/JsonReader.h"
#include <cstdint>

namespace vyerr {

/// Converts a number token. A fraction is cut off toward zero; a value that 32 bits cannot hold gives the
/// lowest number. False, with `value` unchanged, when the C runtime finds no number in the token.
bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept;

/// Room for the text of a number.
using NumberText = char[64];

/// The text of a number token with the decimal separator of the C runtime's locale. `sample` is how the
/// runtime writes 1.5. Without a comma in it, returns the document's own text; with one, a copy in `room` of
/// at most 63 bytes of the token, with a comma in place of the point.
const char* localNumberText(const JsonToken& token, const char* sample, NumberText& room) noexcept;

} // namespace vyerr

#endif
