#ifndef VYTPL_STATUSVECTOR_H
#define VYTPL_STATUSVECTOR_H

#include "vytpl/err/allocator.h"
#include "vytpl/NonCopyable.h"
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace vytpl {

/// A growable sequence of 8- or 16-bit units, not terminated. Never throws: when memory is short it records
/// MemoryFull and stays as it is. Does nothing while the Status holds an error. One thread uses it.
template <class Unit>
class StatusVector : private NonCopyableT<StatusVector<Unit>> {
public:
    StatusVector() noexcept = default;
    ~StatusVector() { std::free(units); }

    /// Appends `count` units.
    void append(const Unit* source, std::size_t count, vyerr::Status& status) noexcept {
        if (status.code < 0 || (count > room - length && !grow(count, status)))
            return;
        std::copy(source, source + count, units + length);
        length += count;
    }

    /// The first unit; null while there is none.
    const Unit* begin() const noexcept { return units; }
    /// The end of the units.
    const Unit* end() const noexcept { return units + length; }

private:
    bool grow(std::size_t count, vyerr::Status& status) noexcept {
        constexpr std::size_t maxUnits = std::numeric_limits<std::size_t>::max() / sizeof(Unit);
        Unit* larger = nullptr;
        std::size_t wanted = 0;
        if (count <= maxUnits - length) {
            wanted = std::max({room + room / 2, std::size_t{8}, length + count});
            larger = static_cast<Unit*>(std::malloc(wanted * sizeof(Unit)));
        }
        if (larger == nullptr) {
            reportMemoryFull(status);
            return false;
        }
        std::copy(begin(), end(), larger);
        std::free(units);
        units = larger;
        room = wanted;
        return true;
    }

    std::size_t room = 0;
    std::size_t length = 0;
    Unit* units = nullptr;
};

} // namespace vytpl

#endif
