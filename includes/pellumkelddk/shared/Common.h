#ifndef PELLUMKELDDK_SHARED_COMMON_H
#define PELLUMKELDDK_SHARED_COMMON_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace vykel {

/// An element count in the 32 bits that the interfaces carry. Throws std::invalid_argument, which a boundary
/// turns into InvalidParameter, when it does not fit.
inline std::uint32_t toCount32(std::size_t count) {
    if (count > std::numeric_limits<std::uint32_t>::max())
        throw std::invalid_argument("element count exceeds 32 bits");
    return static_cast<std::uint32_t>(count);
}

} // namespace vykel

#endif
