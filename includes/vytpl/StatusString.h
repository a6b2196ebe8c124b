#ifndef VYTPL_STATUSSTRING_H
#define VYTPL_STATUSSTRING_H

#include "vytpl/err/allocator.h"
#include "vytpl/NonCopyable.h"
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace vytpl {

/// A growable text of 8- or 16-bit units, always followed by a terminating 0 unit. Never throws: when memory
/// is short it records MemoryFull and stays as it is. Does nothing while the Status holds an error. One
/// thread uses it.
template <class Unit>
class StatusString : private NonCopyableT<StatusString<Unit>> {
public:
    StatusString() noexcept = default;
    ~StatusString() { std::free(units); }

    /// Sets the length: cuts the text off, or extends it with 0 units. False, with the reason recorded, when
    /// that is impossible.
    bool resize(std::size_t count, vyerr::Status& status) noexcept {
        if (!reserve(count, status))
            return false;
        if (count > length)
            std::fill(units + length, units + count, Unit());
        length = count;
        units[length] = Unit();
        return true;
    }

    /// Appends one unit.
    void append(Unit unit, vyerr::Status& status) noexcept {
        if (!reserve(length + 1, status))
            return;
        units[length++] = unit;
        units[length] = Unit();
    }

    /// The units, for a caller that writes them; null while nothing was resized or appended.
    Unit* data() noexcept { return units; }
    /// The terminated text; never null.
    const Unit* c_str() const noexcept { return units != nullptr ? units : &terminator; }
    /// The first unit.
    const Unit* begin() const noexcept { return c_str(); }
    /// The terminating 0 unit.
    const Unit* end() const noexcept { return c_str() + length; }

private:
    /// Makes room for `count` units. False, with the reason recorded, when that is impossible.
    bool reserve(std::size_t count, vyerr::Status& status) noexcept {
        if (status.code < 0)
            return false;
        if (units != nullptr && count <= room)
            return true;
        return grow(count, status);
    }

    bool grow(std::size_t count, vyerr::Status& status) noexcept {
        constexpr std::size_t maxUnits = std::numeric_limits<std::size_t>::max() / sizeof(Unit) - 1;
        const std::size_t wanted = std::max({std::size_t{127}, count, room + room / 2});
        auto* const larger =
            wanted <= maxUnits ? static_cast<Unit*>(std::malloc((wanted + 1) * sizeof(Unit))) : nullptr;
        if (larger == nullptr) {
            reportMemoryFull(status);
            return false;
        }
        std::copy(begin(), end() + 1, larger);
        std::free(units);
        units = larger;
        room = wanted;
        return true;
    }

    static constexpr Unit terminator = Unit();

    Unit* units = nullptr;
    std::size_t room = 0;
    std::size_t length = 0;
};

} // namespace vytpl

#endif
