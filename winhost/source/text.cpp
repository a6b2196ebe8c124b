#include "winhost/text.h"

#include "faultCheck.h"
#include "textConversion.h"

using winhost::Call;

namespace {

/// The common part of both Windows conversions.
template <class Text, class Unit>
int convertInto(Text text, winhost::Converted (*convertText)(Text, Unit*, std::size_t) noexcept, bool strict,
                Unit* buffer, int size) noexcept {
    const std::size_t capacity = size > 0 ? static_cast<std::size_t>(size) : 0;
    const winhost::Converted converted = convertText(text, buffer, capacity);
    if (strict && !converted.valid) {
        SetLastError(ERROR_NO_UNICODE_TRANSLATION);
        return 0;
    }
    if (size != 0 && converted.units > capacity) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return static_cast<int>(converted.units);
}

/// With the length -1 the text is terminated; the terminator is part of the view.
template <class Unit>
std::basic_string_view<Unit> viewOf(const Unit* text, int length) noexcept {
    return {text, length < 0 ? std::char_traits<Unit>::length(text) + 1 : static_cast<std::size_t>(length)};
}

bool rejects(UINT codePage, const void* text, int length) noexcept {
    const bool wrong = codePage != CP_UTF8 || text == nullptr || length == 0;
    if (wrong)
        SetLastError(ERROR_INVALID_PARAMETER);
    return wrong;
}

} // namespace

extern "C" {

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR buffer, int size) {
    if (winhost::fails(Call::MultiByteToWideChar) || rejects(codePage, text, length))
        return 0;
    return convertInto(viewOf(text, length), winhost::utf16FromUtf8, (flags & MB_ERR_INVALID_CHARS) != 0,
                       buffer, size);
}

int WideCharToMultiByte(UINT codePage, DWORD, LPCWSTR text, int length, LPSTR buffer, int size, LPCSTR,
                        LPBOOL) {
    if (winhost::fails(Call::WideCharToMultiByte) || rejects(codePage, text, length))
        return 0;
    return convertInto(viewOf(text, length), winhost::utf8FromUtf16, false, buffer, size);
}
}
