#include "errors/JsonNumber.h"

#include <cstdio>
#include <cstring>

namespace vyerr {

namespace {

/// The C runtime reads a number by the locale; this writes the point as it wants it.
const char* withLocalSeparator(const char* text, char (&buffer)[64]) noexcept {
    std::snprintf(buffer, sizeof buffer, "%.1f", 1.5);
    if (std::strchr(buffer, ',') == nullptr)
        return text;
    std::snprintf(buffer, sizeof buffer, "%s", text);
    buffer[strcspn(buffer, ".,")] = ',';
    return buffer;
}

} // namespace

bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept {
    if (token.flag == 0) {
        int scanned = 0;
        if (std::sscanf(token.start, "%i", &scanned) != 1)
            return false;
        *value = scanned;
        return true;
    }
    char buffer[64];
    double scanned = 0;
    if (std::sscanf(withLocalSeparator(token.start, buffer), "%lg", &scanned) != 1)
        return false;
    // Written so that a NaN, too, takes the second branch.
    const bool fits = scanned > -2147483649.0 && scanned < 2147483648.0;
    *value = fits ? static_cast<std::int32_t>(scanned) : INT32_MIN;
    return true;
}

} // namespace vyerr
