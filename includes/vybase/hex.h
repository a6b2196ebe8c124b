#ifndef VYBASE_HEX_H
#define VYBASE_HEX_H

namespace vybase {

/// The hexadecimal digits by their value.
inline constexpr char hexDigits[] = "0123456789abcdef";

/// The value of a hexadecimal digit of either case, or -1.
constexpr int hexValue(char character) noexcept {
    if (character >= '0' && character <= '9')
        return character - '0';
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace vybase

#endif
