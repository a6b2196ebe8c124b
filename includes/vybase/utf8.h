#ifndef VYBASE_UTF8_H
#define VYBASE_UTF8_H

#include <cstddef>
#include <cstdint>

namespace vybase {

/// Writes a code point below 0x200000 as UTF-8, surrogates included. Returns the number of bytes, 1 to 4.
inline std::size_t encodeUtf8(std::uint32_t codePoint, char* out) noexcept {
    const auto byte = [](std::uint32_t value) {
        return static_cast<char>(static_cast<unsigned char>(value));
    };
    if (codePoint < 0x80) {
        out[0] = byte(codePoint);
        return 1;
    }
    const std::size_t length = codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
    for (std::size_t i = length - 1; i > 0; --i, codePoint >>= 6)
        out[i] = byte(0x80 | (codePoint & 0x3F));
    out[0] = byte((0xF00u >> length) | codePoint); // as many leading ones as there are bytes
    return length;
}

} // namespace vybase

#endif
