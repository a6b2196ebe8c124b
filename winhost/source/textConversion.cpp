#include "textConversion.h"

#include <clocale>
#include <cwctype>

namespace winhost {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t invalid = 0xFFFFFFFF;

bool isSurrogate(char32_t code) noexcept {
    return code >= 0xD800 && code < 0xE000;
}

/// Removes the first code point of `text` and returns it. Of invalid text it removes one byte and returns
/// `invalid`.
char32_t takeUtf8(std::string_view& text) noexcept {
    const auto byteAt = [&](std::size_t at) -> char32_t {
        return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
    };
    const char32_t lead = byteAt(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    constexpr char32_t leadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    char32_t code = lead & leadBits[length];
    bool good = length != 0;
    for (std::size_t i = 1; i < length; ++i) {
        good = good && (byteAt(i) & 0xC0U) == 0x80;
        code = code << 6U | (byteAt(i) & 0x3FU);
    }
    good = good && code >= least[length] && code <= 0x10FFFF && !isSurrogate(code);
    text.remove_prefix(good ? length : 1);
    return good ? code : invalid;
}

/// The same for UTF-16; of invalid text it removes one unit.
char32_t takeUtf16(std::u16string_view& text) noexcept {
    char32_t code = text[0];
    const bool pair =
        code >= 0xD800 && code < 0xDC00 && text.size() > 1 && text[1] >= 0xDC00 && text[1] < 0xE000;
    if (pair)
        code = 0x10000 + ((code - 0xD800) << 10U) + (text[1] - 0xDC00U);
    text.remove_prefix(pair ? 2 : 1);
    return isSurrogate(code) ? invalid : code;
}

std::size_t encode(char32_t code, WCHAR (&out)[4]) noexcept {
    if (code < 0x10000) {
        out[0] = static_cast<WCHAR>(code);
        return 1;
    }
    out[0] = static_cast<WCHAR>((code >> 10U) + 0xD7C0);
    out[1] = static_cast<WCHAR>((code & 0x3FFU) + 0xDC00);
    return 2;
}

std::size_t encode(char32_t code, char (&out)[4]) noexcept {
    const std::size_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    constexpr char32_t marks[] = {0, 0, 0xC0, 0xE0, 0xF0};
    for (std::size_t i = length; i-- > 1; code >>= 6U)
        out[i] = static_cast<char>(0x80U | (code & 0x3FU));
    out[0] = static_cast<char>(marks[length] | code);
    return length;
}

template <class Text, class Unit>
Converted convert(Text text, char32_t (*take)(Text&) noexcept, Unit* out, std::size_t capacity) noexcept {
    Converted result{0, true};
    while (!text.empty()) {
        const char32_t code = take(text);
        result.valid = result.valid && code != invalid;
        Unit units[4];
        const std::size_t count = encode(code == invalid ? replacement : code, units);
        for (std::size_t i = 0; i < count; ++i, ++result.units)
            if (result.units < capacity)
                out[result.units] = units[i];
    }
    return result;
}

} // namespace

Converted utf16FromUtf8(std::string_view text, WCHAR* out, std::size_t capacity) noexcept {
    return convert(text, takeUtf8, out, capacity);
}

Converted utf8FromUtf16(std::u16string_view text, char* out, std::size_t capacity) noexcept {
    return convert(text, takeUtf16, out, capacity);
}

std::u16string toUtf16(std::string_view text) {
    std::u16string result(utf16FromUtf8(text, nullptr, 0).units, u'\0');
    utf16FromUtf8(text, result.data(), result.size());
    return result;
}

std::u16string upperCase(std::u16string_view text) {
    static const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    std::u16string result(text);
    for (char16_t& unit : result) {
        const wint_t upper = unicode != nullptr ? ::towupper_l(unit, unicode) : std::towupper(unit);
        unit = upper < 0x10000 ? static_cast<char16_t>(upper) : unit;
    }
    return result;
}

} // namespace winhost
