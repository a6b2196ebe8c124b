#ifndef INI_INIINDEX_H
#define INI_INIINDEX_H

#include "ini/IniMemory.h"
#include "ini/IniText.h"
#include <cstdint>

namespace vyini {

/// Finds the items of an ordered list by name in constant and by position in logarithmic time.
///
/// Every item has a slot; slots stand in the order of the list. The slots whose names share a bucket form a
/// ring in the same order, and the bucket knows the ring's last slot, whose successor is the first. So equal
/// names are met in list order, and adding one more costs the same however many there are. A removed item
/// leaves its slot empty until the index next grows. One thread; nothing throws.
///
/// T has a pointer `next` to T; nameOf(const T&) gives its name. There is an index of sections and one of
/// entries.
template <class T>
class IniIndex {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    /// For names compared with this `caseSensitive`.
    explicit IniIndex(int caseSensitivity) noexcept : caseSensitive(caseSensitivity) {}

    /// Fills the empty index with the `count` items of a list. False when memory is short.
    bool build(T* first, std::uint32_t count) noexcept;

    /// The hash of a name, as this index compares it.
    std::uint32_t hashOf(const char* name) const noexcept { return hashIniName(name, caseSensitive); }

    /// Adds the item that was appended to the list. False when memory is short: the index then lacks it.
    bool append(T* item, std::uint32_t hash) noexcept;

    /// The slot of the first item in list order whose name compares equal to one of that hash, or `none`.
    std::uint32_t find(const char* name, std::uint32_t hash) const noexcept;

    T* itemAt(std::uint32_t slot) const noexcept { return slots[slot].item; }

    /// Empties a slot that find() gave.
    void remove(std::uint32_t slot) noexcept;

    /// The n-th item of the list, counted from 1; `n` must be within the list. Null when memory is short.
    T* atPosition(std::uint32_t n) noexcept;

    const int caseSensitive;

private:
    struct Slot {
        T* item; ///< null: removed
        std::uint32_t hash;
        std::uint32_t following; ///< next slot of the same bucket
    };

    bool resize(std::uint32_t newCapacity) noexcept;
    void link(Slot added) noexcept;
    bool countRanks() noexcept;
    void addToRanks(std::uint32_t slot, std::uint32_t change) noexcept;
    std::uint32_t& bucketOf(std::uint32_t hash) const noexcept { return buckets[hash & (capacity - 1)]; }

    IniArray<Slot> slots;
    IniArray<std::uint32_t> buckets; ///< last slot of each ring plus 1; 0: empty
    IniArray<std::uint32_t> ranks;   ///< binary indexed tree of items up to each slot; null until needed
    std::uint32_t capacity = 0;      ///< of slots and of buckets, a power of two
    std::uint32_t used = 0;          ///< slots, removed ones included
    std::uint32_t removed = 0;
};

} // namespace vyini

#endif
