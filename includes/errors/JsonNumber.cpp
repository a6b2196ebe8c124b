#include "errors/JsonNumber.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace vyerr {

const char* localNumberText(const JsonToken& token, const char* sample, NumberText& room) noexcept {
    if (std::strchr(sample, ',') == nullptr)
        return token.start;
    const std::size_t length = std::min(static_cast<std::size_t>(token.length), sizeof room - 1);
    std::memcpy(room, token.start, length);
    room[length] = '\0';
    if (char* const separator = std::strpbrk(room, ".,"))
        *separator = ',';
    return &room[0]; // cppcheck takes the name of the array for an integer
}

bool jsonNumberToInt(const JsonToken& token, std::int32_t* value) noexcept {
    if (token.flag == 0) {
        int scanned = 0;
        if (std::sscanf(token.start, "%i", &scanned) != 1)
            return false;
        *value = scanned;
        return true;
    }
    NumberText sample;
    std::snprintf(sample, sizeof sample, "%.1f", 1.5);
    NumberText room;
    double scanned = 0;
    if (std::sscanf(localNumberText(token, sample, room), "%lg", &scanned) != 1)
        return false;
    // Written so that a NaN does not fit either.
    const bool fits = scanned > -2147483649.0 && scanned < 2147483648.0;
    *value = fits ? static_cast<std::int32_t>(scanned) : INT32_MIN;
    return true;
}

} // namespace vyerr
