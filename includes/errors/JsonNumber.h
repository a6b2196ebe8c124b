#ifndef ERRORS_JSONNUMBER_H
#define ERRORS_JSONNUMBER_H

#include "errors/JsonReader.h"
#include <cstdint>

namespace vyerr {

/// Converts a number token; a fraction is cut off toward zero, a value beyond 32 bits gives the lowest
/// number.
bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept;

} // namespace vyerr

#endif
