#ifndef VYKELDEV_DOCTOR_BYTEVIEW_H
#define VYKELDEV_DOCTOR_BYTEVIEW_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace vykeldev::doctor {

/// Little-endian numbers and texts in bytes that nobody vouches for. Every read checks its bounds and throws
/// std::out_of_range. Offsets have 64 bits so that sums of the 32-bit ones in files do not wrap.
class ByteView {
public:
    explicit ByteView(std::string_view fileBytes) noexcept : bytes(fileBytes) {}

    std::uint64_t size() const noexcept { return bytes.size(); }

    std::uint16_t u16(std::uint64_t offset) const { return static_cast<std::uint16_t>(number(offset, 2)); }
    std::uint32_t u32(std::uint64_t offset) const { return static_cast<std::uint32_t>(number(offset, 4)); }

    bool startsWith(std::uint64_t offset, std::string_view text) const noexcept {
        return offset <= bytes.size() && bytes.substr(offset, text.size()) == text;
    }

    /// A NUL-terminated text, of which no more than 255 bytes are taken.
    std::string text(std::uint64_t offset) const {
        if (offset >= bytes.size())
            throw std::out_of_range("text");
        const std::string_view longest = bytes.substr(offset, 255);
        return std::string(longest.substr(0, longest.find('\0')));
    }

private:
    std::uint64_t number(std::uint64_t offset, unsigned count) const {
        if (offset > bytes.size() || bytes.size() - offset < count)
            throw std::out_of_range("number");
        std::uint64_t value = 0;
        for (unsigned i = count; i-- > 0;)
            value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
        return value;
    }

    std::string_view bytes;
};

} // namespace vykeldev::doctor

#endif
