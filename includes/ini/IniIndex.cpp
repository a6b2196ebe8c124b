#include "ini/IniIndex.h"
#include "ini/IniDocument.h"
#include <utility>

namespace vyini {

namespace {

constexpr std::uint32_t lowestBit(std::uint32_t i) noexcept {
    return i & (0 - i);
}

} // namespace

template <class T>
bool IniIndex<T>::build(T* first, std::uint32_t count) noexcept {
    std::uint32_t wanted = 32;
    while (wanted <= count && wanted != 0)
        wanted *= 2;
    if (!resize(wanted))
        return false;
    for (T* item = first; item != nullptr; item = item->next)
        link({item, hashOf(nameOf(*item)), 0});
    return true;
}

template <class T>
bool IniIndex<T>::append(T* item, std::uint32_t hash) noexcept {
    if (used == capacity && !resize(removed > capacity / 2 ? capacity : capacity * 2))
        return false;
    link({item, hash, 0});
    if (ranks != nullptr)
        addToRanks(used - 1, 1);
    return true;
}

template <class T>
std::uint32_t IniIndex<T>::find(const char* name, std::uint32_t hash) const noexcept {
    const std::uint32_t last = bucketOf(hash);
    if (last == 0)
        return none;
    std::uint32_t slot = last - 1;
    do {
        slot = slots[slot].following;
        if (slots[slot].hash == hash && equalIniNames(name, nameOf(*slots[slot].item), caseSensitive))
            return slot;
    } while (slot != last - 1);
    return none;
}

template <class T>
void IniIndex<T>::remove(std::uint32_t slot) noexcept {
    std::uint32_t& last = bucketOf(slots[slot].hash);
    std::uint32_t before = last - 1;
    while (slots[before].following != slot)
        before = slots[before].following;
    slots[before].following = slots[slot].following;
    if (before == slot)
        last = 0;
    else if (last - 1 == slot)
        last = before + 1;
    slots[slot].item = nullptr;
    ++removed;
    if (ranks != nullptr)
        addToRanks(slot, UINT32_MAX); // takes one away
}

template <class T>
T* IniIndex<T>::atPosition(std::uint32_t n) noexcept {
    if (removed == 0)
        return slots[n - 1].item;
    if (ranks == nullptr && !countRanks())
        return nullptr;
    std::uint32_t before = 0; // slots known to lie before the n-th item
    for (std::uint32_t step = capacity; step != 0; step /= 2) {
        if (step <= capacity - before && ranks[before + step] < n) {
            before += step;
            n -= ranks[before];
        }
    }
    return slots[before].item;
}

/// Gives the index a new capacity, a power of two, and closes the gaps. False when memory is short.
template <class T>
bool IniIndex<T>::resize(std::uint32_t newCapacity) noexcept {
    if (newCapacity == 0)
        return false; // more than 2^31 items
    IniArray<Slot> from = makeIniArray<Slot>(newCapacity);
    IniArray<std::uint32_t> newBuckets = makeIniArray<std::uint32_t>(newCapacity);
    if (from == nullptr || newBuckets == nullptr)
        return false;
    from.swap(slots);
    buckets = std::move(newBuckets);
    ranks.reset();
    const std::uint32_t end = used;
    capacity = newCapacity;
    used = removed = 0;
    for (std::uint32_t slot = 0; slot < end; ++slot)
        if (from[slot].item != nullptr)
            link(from[slot]);
    return true;
}

/// Puts the item of `added` into the next slot, for which there is room.
template <class T>
void IniIndex<T>::link(Slot added) noexcept {
    std::uint32_t& last = bucketOf(added.hash);
    if (last == 0) {
        added.following = used;
    } else {
        added.following = slots[last - 1].following;
        slots[last - 1].following = used;
    }
    slots[used] = added;
    last = ++used;
}

template <class T>
bool IniIndex<T>::countRanks() noexcept {
    ranks = makeIniArray<std::uint32_t>(std::size_t{capacity} + 1);
    if (ranks == nullptr)
        return false;
    for (std::uint32_t i = 1; i <= capacity; ++i) {
        ranks[i] += i <= used && slots[i - 1].item != nullptr ? 1U : 0U;
        const std::uint32_t above = i + lowestBit(i);
        if (above <= capacity)
            ranks[above] += ranks[i];
    }
    return true;
}

template <class T>
void IniIndex<T>::addToRanks(std::uint32_t slot, std::uint32_t change) noexcept {
    for (std::uint32_t i = slot + 1; i <= capacity; i += lowestBit(i))
        ranks[i] += change;
}

template class IniIndex<IniSection>;
template class IniIndex<IniEntry>;

} // namespace vyini
