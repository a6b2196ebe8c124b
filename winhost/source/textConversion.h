#ifndef WINHOST_TEXTCONVERSION_H
#define WINHOST_TEXTCONVERSION_H

#include "winhost/types.h"
#include <string>
#include <string_view>

namespace winhost {

struct Converted {
    std::size_t units; ///< what the whole text needs, whether or not it fitted
    bool valid;        ///< false when something came out as U+FFFD
};

/// Convert `text`, writing no more than `capacity` units; no terminator is added.
Converted utf16FromUtf8(std::string_view text, WCHAR* out, std::size_t capacity) noexcept;
Converted utf8FromUtf16(std::u16string_view text, char* out, std::size_t capacity) noexcept;

/// The same into a string. May throw std::bad_alloc.
std::u16string toUtf16(std::string_view text);
std::string toUtf8(std::u16string_view text);

/// The text in upper case, unit by unit as Windows folds the names of keys. May throw std::bad_alloc.
std::u16string upperCase(std::u16string_view text);

} // namespace winhost

#endif
