#ifndef ERRORS_STATUS_H
#define ERRORS_STATUS_H

#include <cstdint>

namespace vyerr {

struct Status;

/// Grows or releases a Status' text buffer. With a wanted capacity of 0 it frees the buffer and returns true;
/// with one not above the present capacity it changes nothing and returns true; otherwise it provides at
/// least that many bytes holding the same text and returns true, or changes nothing and returns false.
using StatusReallocateFn = bool (*)(Status* status, std::uint32_t wantedCapacity);

/// The library's internal record of an outcome: the code, and a JSON text that says what failed and where.
///
/// `json` is null until the first error; then its buffer of `capacity` bytes holds the NUL-terminated text,
/// zero bytes, and in the very last byte the end marker 'J'. The record owns the buffer and frees it only
/// through `reallocate`; it is never copied member by member: the text moves with mergeStatus. The code is
/// always right; the text holds as much as memory allowed. A record belongs to the thread that made it.
struct Status {
    std::int32_t code;
    std::uint32_t capacity;
    StatusReallocateFn reallocate;
    char* json;
};

/// The least capacity of a buffer: room for "{}", its NUL and the end marker.
constexpr std::uint32_t minStatusCapacity = 4;

/// The one StatusReallocateFn in use: buffers of 512 bytes or the next power of two, from malloc.
bool defaultStatusReallocate(Status* status, std::uint32_t wantedCapacity) noexcept;

/// Makes an empty record: code 0, no buffer. Returns `status`.
Status* initStatus(Status* status) noexcept;

/// Sets the code to 0 and frees the buffer.
void releaseStatus(Status* status) noexcept;

/// The rule of every record and block, the first error wins: an error is never replaced, a warning only by an
/// error, and 0 replaces nothing.
constexpr bool replacesCode(std::int32_t current, std::int32_t offered) noexcept {
    return (current == 0 && offered != 0) || (current > 0 && offered < 0);
}

/// Stores a code when replacesCode allows it, and empties the text. Returns whether the code was stored.
bool setStatusCode(Status* status, std::int32_t code) noexcept;

/// Stores `from`'s code in `into` when replacesCode allows it, and moves the text with it; `from` keeps its
/// code but no text. Returns whether the code was stored.
bool mergeStatus(Status* into, Status* from) noexcept;

/// Doubles a record's buffer; the `grow` of a StatusTextGrowth. Returns the cursor at the same offset, or
/// null when the buffer cannot grow.
char* growStatusText(char* cursor, Status* status) noexcept;

} // namespace vyerr

#endif
