#ifndef ERRORS_ERRORINFOTEXT_H
#define ERRORS_ERRORINFOTEXT_H

#include <cstddef>
#include <cstdint>

/// The writer of a Status' JSON text. It inserts fields in place, at a cursor, and builds no tree. A cursor
/// is the place in the text where the next field goes, normally the closing brace of the object being filled;
/// a null cursor means that nothing more can be added. Every operation first counts the zero bytes between
/// the text and its end marker: a field is written whole or not at all.
namespace vyerr {

struct Status;

/// How an add operation gets more room: `grow` returns the cursor in a larger buffer, or null when there is
/// none. A null `grow` never grows. Borrowed for one call.
struct StatusTextGrowth {
    char* (*grow)(char* cursor, Status* context);
    Status* context;
};

/// Fills a buffer with a text (when null, with the text that it holds), NUL, zeros and the end marker.
/// Returns the place of the text's last character, or null, with nothing written, when `size` is too small.
char* layStatusText(char* buffer, std::size_t size, const char* text) noexcept;

/// The cursor at the closing brace (or bracket) of the whole text; null when the text is not a closed object
/// or array.
char* errorInfoEnd(char* text) noexcept;

/// Each adds one field at the cursor (with a null key an array's element) and returns the cursor after it, or
/// null when there is no room or the cursor is null. addObjectField adds "{}".
char* addStringField(char* cursor, const char* key, const char* value, StatusTextGrowth growth) noexcept;
char* addIntField(char* cursor, const char* key, std::int32_t value, StatusTextGrowth growth) noexcept;
char* addUIntField(char* cursor, const char* key, std::uint32_t value, StatusTextGrowth growth) noexcept;
char* addObjectField(char* cursor, const char* key, StatusTextGrowth growth) noexcept;

} // namespace vyerr

#endif
