#ifndef ERRORS_JSONREADER_H
#define ERRORS_JSONREADER_H

#include <cstdint>

/// The reader of a Status' JSON text. It works on the NUL-terminated text, allocates nothing and never reads
/// past the NUL.
namespace vyerr {

/// What a value is.
enum class JsonType : std::uint32_t { Error, Null, Boolean, Number, String, Array, Object };

/// Why a text is not a JSON value.
enum class JsonError : std::int64_t {
    None = 0,                ///< No value begins here.
    BadString = 2,           ///< A control character, a DEL or no closing quote.
    ObjectNotClosed = 3,     ///< An object has no end, or nests deeper than the reader allows.
    ArrayNotClosed = 4,      ///< An array has no end, or nests deeper than the reader allows.
    NoColon = 5,             ///< A member has no colon after its key.
    UnexpectedCharacter = 6, ///< No comma and no end after a value, or no key where one must be.
    BadEscape = 7,           ///< A string has an invalid escape.
    TrailingComma = 8        ///< A comma is followed by the closing brace or bracket.
};

/// What parseJsonValue found.
struct JsonToken {
    JsonType type;
    /// The place of a value (of a string: after the opening quote) or of an error. Of a boolean not a place
    /// but the value, 1 or 0.
    const char* start;
    /// The length of a value in bytes, of a string without its quotes and with its escapes. Of an error the
    /// JsonError.
    std::int64_t length;
    /// 1 for a number with a fraction or an exponent, otherwise 0.
    std::int64_t flag;
};

/// The characters that the reader skips between the elements of a text.
constexpr bool isJsonBlank(char character) noexcept {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

/// The first character at or after a position that is not blank.
const char* skipJsonBlanks(const char* position) noexcept;

/// Reads the value that begins at a position. Returns the end of it, or null at an error; `token`, when not
/// null, describes the value or the error.
const char* parseJsonValue(const char* position, JsonToken* token) noexcept;

/// The first character of the value of a member at the top level of an object, or null when there is none or
/// the text is malformed before it. The first member of that name wins.
const char* findField(const char* text, const char* key) noexcept;

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
