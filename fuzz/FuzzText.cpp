// The conversions between the texts of the registry and the library: any bytes, and any units. Units of which
// each pair is whole come back the same.
#include "Fuzz.h"
#include "support/OwnedStatus.h"
#include "vysys/textConversion.h"
#include <vector>

namespace {

using namespace vykelfuzz;
using Units = std::vector<WCHAR>;

/// The units that the library makes of the bytes.
Units unitsOf(const std::string& bytes) {
    vykeltest::OwnedStatus status;
    vysys::Utf16String utf16;
    vysys::utf8ToUtf16(bytes.data(), bytes.data() + bytes.size(), utf16, status);
    check(status.code == 0);
    return {utf16.begin(), utf16.end()};
}

bool hasBrokenPair(const Units& units) {
    for (std::size_t i = 0; i + 1 < units.size(); ++i)
        if (units[i] >> 10 == 0xD800 >> 10 && units[++i] >> 10 != 0xDC00 >> 10)
            return true;
    return false;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const WCHAR unit : unitsOf(textOf(data, size)))
        note(std::to_string(unit));
    Units units;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        units.push_back(static_cast<WCHAR>(data[i] | data[i + 1] << 8));
    vykeltest::OwnedStatus status;
    vysys::Utf8Vector utf8;
    vysys::utf16ToUtf8(units.data(), units.data() + units.size(), utf8, status);
    const std::string bytes(utf8.begin(), utf8.end());
    note(bytes);
    check(status.code == 0 && (hasBrokenPair(units) || unitsOf(bytes) == units));
    return 0;
}
