#include "vysys/textConversion.h"

#include "vybase/utf8.h"
#include <cstring>

namespace vysys {

namespace {

/// The number of bytes that a lead byte announces; 1 when it announces none.
std::ptrdiff_t sequenceLength(unsigned char lead) noexcept {
    if ((lead & 0xE0) == 0xC0)
        return 2;
    if ((lead & 0xF0) == 0xE0)
        return 3;
    return (lead & 0xF8) == 0xF0 ? 4 : 1;
}

/// Decodes the code point at `position`, which is before `end`, and moves the position past its bytes. A byte
/// that begins no sequence, or begins one that the end cuts off, is a code point itself.
std::uint32_t decodeUtf8CodePoint(const char*& position, const char* end) noexcept {
    const auto lead = static_cast<unsigned char>(*position++);
    const std::ptrdiff_t length = sequenceLength(lead);
    if (length == 1 || end - position < length - 1)
        return lead;
    std::uint32_t codePoint = lead & (0x7Fu >> length);
    for (std::ptrdiff_t i = 1; i < length; ++i)
        codePoint = (codePoint << 6) + (static_cast<unsigned char>(*position++) & 0x3F);
    return codePoint;
}

} // namespace

void utf8ToUtf16(const char* begin, const char* end, Utf16String& out, vyerr::Status& status) noexcept {
    while (begin != end) {
        const std::uint32_t codePoint = decodeUtf8CodePoint(begin, end);
        if (codePoint < 0x10000) {
            out.append(static_cast<WCHAR>(codePoint), status);
        } else {
            out.append(static_cast<WCHAR>((codePoint >> 10) + 0xD800 - (0x10000 >> 10)), status);
            out.append(static_cast<WCHAR>((codePoint & 0x3FF) + 0xDC00), status);
        }
    }
}

void utf8ToUtf16(const char* text, Utf16String& out, vyerr::Status& status) noexcept {
    utf8ToUtf16(text, text + std::strlen(text), out, status);
}

void utf16ToUtf8(const WCHAR* begin, const WCHAR* end, Utf8Vector& out, vyerr::Status& status) noexcept {
    // What high * 1024 + low exceeds the code point of a surrogate pair by.
    constexpr std::uint32_t surrogateOffset = 0xD800 * 1024 + 0xDC00 - 0x10000;
    while (begin != end) {
        std::uint32_t codePoint = *begin++;
        // A high surrogate forms a pair with whatever unit follows; as the last unit it is a code point
        // itself.
        if (codePoint >= 0xD800 && codePoint < 0xDC00 && begin != end)
            codePoint = codePoint * 1024 + *begin++ - surrogateOffset;
        char bytes[4];
        out.append(bytes, vybase::encodeUtf8(codePoint, bytes), status);
    }
}

} // namespace vysys
