#ifndef WINHOST_TEXTCONVERSION_H
#define WINHOST_TEXTCONVERSION_H

#include "winhost/types.h"
#include <string>
#include <string_view>

namespace winhost {

/// The outcome of a conversion.
struct Converted {
    std::size_t units; ///< the length of the whole result, even when it did not fit
    bool valid;        ///< false when something became U+FFFD
};

/// Converts `text` and writes at most `capacity` units, without a terminator. `out` may be null when
/// `capacity` is 0.
Converted utf16FromUtf8(std::string_view text, WCHAR* out, std::size_t capacity) noexcept;
/// The same in the other direction.
Converted utf8FromUtf16(std::u16string_view text, char* out, std::size_t capacity) noexcept;

/// The text as UTF-16. May throw std::bad_alloc.
std::u16string toUtf16(std::string_view text);

/// The text in upper case, unit by unit, as Windows compares the names of keys. May throw std::bad_alloc.
std::u16string upperCase(std::u16string_view text);

} // namespace winhost

#endif
