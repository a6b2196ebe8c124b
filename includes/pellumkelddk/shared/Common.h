#ifndef PELLUMKELDDK_SHARED_COMMON_H
#define PELLUMKELDDK_SHARED_COMMON_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace vykel {

/// A number of elements in the 32 bits of the interfaces. Throws std::invalid_argument when it needs more.
inline std::uint32_t toCount32(std::size_t count) {
    if (count > std::numeric_limits<std::uint32_t>::max())
        throw std::invalid_argument("element count exceeds 32 bits");
    return static_cast<std::uint32_t>(count);
}

} // namespace vykel

#endif
