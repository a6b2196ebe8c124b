#ifndef ERRORS_ERRORINFOTEXT_H
#define ERRORS_ERRORINFOTEXT_H

#include <cstddef>
#include <cstdint>

/// The writing half of the small JSON engine behind Status: it inserts fields into a text in place, at a
/// cursor, without ever building a tree. A cursor points at the place in the text where the next field goes,
/// normally the closing brace of the object being filled; a null cursor means that nothing more can be added.
/// Every operation measures the zero bytes between the text and its end marker first: a field is written
/// whole or not at all.
namespace vyerr {

struct Status;

/// How an add operation gets room: `grow` returns the cursor's place in a larger buffer, or null. A null
/// `grow` never grows. Borrowed for one call.
struct StatusTextGrowth {
    char* (*grow)(char* cursor, Status* context);
    Status* context;
};

/// Lays a text (or, with a null `text`, the buffer's own) into a buffer: text, NUL, zeros, end marker.
/// Returns a pointer to the text's last character, or null, with nothing written, when `size` is too small.
char* layStatusText(char* buffer, std::size_t size, const char* text) noexcept;

/// The cursor at the closing brace (or bracket) of the whole text, or null when it is not a closed one.
char* errorInfoEnd(char* text) noexcept;

/// Each adds one field at the cursor (without a key: an array's element) and returns the cursor behind it, or
/// null when it found no room or the cursor was null. addObjectField adds "{}".
char* addStringField(char* cursor, const char* key, const char* value, StatusTextGrowth growth) noexcept;
char* addIntField(char* cursor, const char* key, std::int32_t value, StatusTextGrowth growth) noexcept;
char* addUIntField(char* cursor, const char* key, std::uint32_t value, StatusTextGrowth growth) noexcept;
char* addObjectField(char* cursor, const char* key, StatusTextGrowth growth) noexcept;

} // namespace vyerr

#endif
