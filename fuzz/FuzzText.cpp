// The conversions between the texts of the registry and the library: any bytes, and any units, against the
// formulas of the tables.
#include "Fuzz.h"
#include "support/OwnedStatus.h"
#include "vysys/textConversion.h"
#include <vector>

namespace {

using namespace vykelfuzz;
using Units = std::vector<WCHAR>;

/// A sequence that its lead byte announces and the end cuts off is read byte by byte.
Units modelUtf16(const std::string& text) {
    Units units;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : 1;
        length = length > text.size() - i ? 1 : length;
        std::uint32_t c = length == 1 ? lead : lead & (0x7Fu >> length);
        for (std::size_t k = 1; k < length; ++k)
            c = c * 64 + (static_cast<unsigned char>(text[i + k]) & 0x3F);
        i += length;
        if (c >= 0x10000)
            units.push_back(static_cast<WCHAR>(0xD800 + (c - 0x10000) / 1024));
        units.push_back(static_cast<WCHAR>(c < 0x10000 ? c : 0xDC00 + c % 1024));
    }
    return units;
}

/// The UTF-8 of a code point below 0x200000, by the table of its forms.
std::string utf8Of(std::uint32_t c) {
    const auto tail = [&](unsigned shift) { return static_cast<char>(0x80 | (c >> shift & 0x3F)); };
    const auto lead = [&](unsigned mark, unsigned shift) { return static_cast<char>(mark | c >> shift); };
    if (c < 0x80)
        return {lead(0, 0)};
    if (c < 0x800)
        return {lead(0xC0, 6), tail(0)};
    if (c < 0x10000)
        return {lead(0xE0, 12), tail(6), tail(0)};
    return {lead(0xF0, 18), tail(12), tail(6), tail(0)};
}

std::string modelUtf8(const Units& units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const std::uint32_t u = units[i];
        const bool leads = u >= 0xD800 && u < 0xDC00 && i + 1 < units.size();
        text += utf8Of(leads ? 0x10000 + ((u - 0xD800) << 10) + units[++i] - 0xDC00 : u);
    }
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto* const bytes = reinterpret_cast<const char*>(data);
    vykeltest::OwnedStatus status;
    vysys::Utf16String utf16;
    vysys::utf8ToUtf16(bytes, bytes + size, utf16, status);
    check(Units(utf16.begin(), utf16.end()) == modelUtf16(textOf(data, size)));

    Units units;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        units.push_back(static_cast<WCHAR>(data[i] | data[i + 1] << 8));
    vysys::Utf8Vector utf8;
    vysys::utf16ToUtf8(units.data(), units.data() + units.size(), utf8, status);
    check(std::string(utf8.begin(), utf8.end()) == modelUtf8(units));
    check(status.code == 0);
    return 0;
}
