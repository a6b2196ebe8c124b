#ifndef INI_INILIST_H
#define INI_INILIST_H

#include "ini/IniMemory.h"
#include "ini/IniText.h"
#include <cstdint>
#include <memory>
#include <new>

namespace vyini {

/// Finds the items of an ordered list by name in constant time. One thread uses it; nothing throws.
///
/// Every item has a slot. The slots of one bucket form a ring in list order, and the bucket holds the last:
///
///     bucket ----------------.
///                            v
///     .-> slot 1 -> slot 4 -> slot 7 -.
///     '-------------------------------'
///
/// A search begins after the last slot, so it meets equal names in list order. An append adds a slot after
/// the last, which costs the same however many there are. The slot of a removed item is not used again: when
/// all slots are used, the owner makes a new index.
///
/// `nameOf(const T&)` gives the name of an item.
template <class T>
class IniIndex {
public:
    /// An empty index for at least `count` items, whose names are compared with this `caseSensitive`.
    IniIndex(std::uint32_t count, int caseSensitivity) noexcept : caseSensitive(caseSensitivity) {
        while (capacity <= count && capacity != 0)
            capacity *= 2;
        slots = makeIniArray<Slot>(capacity);
        buckets = makeIniArray<std::uint32_t>(capacity);
        if (slots == nullptr || buckets == nullptr)
            capacity = 0;
    }

    /// Adds an item after all others. False when no slot is left, or the index had no memory for any.
    bool append(T* item) noexcept {
        if (used == capacity)
            return false;
        const std::uint32_t hash = hashIniName(nameOf(*item), caseSensitive);
        std::uint32_t& last = bucketOf(hash);
        const std::uint32_t first = last == 0 ? used : slots[last - 1].following;
        if (last != 0)
            slots[last - 1].following = used;
        slots[used] = {item, hash, first};
        last = ++used;
        return true;
    }

    /// The first item in list order whose name compares equal, or null.
    T* find(const char* name) const noexcept {
        const std::uint32_t hash = hashIniName(name, caseSensitive);
        const std::uint32_t last = bucketOf(hash);
        if (last == 0)
            return nullptr;
        std::uint32_t slot = last - 1;
        do {
            slot = slots[slot].following;
            if (slots[slot].hash == hash && equalIniNames(name, nameOf(*slots[slot].item), caseSensitive))
                return slots[slot].item;
        } while (slot != last - 1);
        return nullptr;
    }

    /// Removes an item that was appended; its name must be the same as then.
    void remove(const T* item) noexcept {
        std::uint32_t& last = bucketOf(hashIniName(nameOf(*item), caseSensitive));
        std::uint32_t before = last - 1;
        std::uint32_t slot = slots[before].following;
        while (slots[slot].item != item) {
            before = slot;
            slot = slots[slot].following;
        }
        slots[before].following = slots[slot].following;
        if (before == slot)
            last = 0;
        else if (last - 1 == slot)
            last = before + 1;
    }

    const int caseSensitive; ///< how names compare, see compareIniNames

private:
    struct Slot {
        T* item;
        std::uint32_t hash;
        std::uint32_t following; ///< next slot of the same bucket
    };

    std::uint32_t& bucketOf(std::uint32_t hash) const noexcept { return buckets[hash & (capacity - 1)]; }

    IniArray<Slot> slots;
    IniArray<std::uint32_t> buckets; ///< last slot of each ring plus 1; 0: empty
    std::uint32_t capacity = 32;     ///< of slots and of buckets, a power of two
    std::uint32_t used = 0;          ///< slots, those of removed items included
};

/// An ordered list of named items, linked through their `next` and `previous`. It does not own them. Walk it
/// with first() and `next`. Names may repeat; `nameOf(const T&)` gives them. The first search in a list of
/// more than a few items makes an index. Without memory for one, a search walks the list, so it never fails.
/// One thread uses it.
template <class T>
class IniList {
public:
    /// The first item, or null.
    T* first() const noexcept { return head; }
    /// Number of items.
    std::uint32_t count() const noexcept { return size; }

    /// Adds an item that is in no list at the end.
    void append(T* item) noexcept {
        item->previous = tail;
        item->next = nullptr;
        (tail != nullptr ? tail->next : head) = item;
        tail = item;
        ++size;
        if (index != nullptr && !index->append(item))
            dropIndex();
    }

    /// The first item whose name compareIniNames finds equal to `name`, or null. `name` is not null.
    T* find(const char* name, int caseSensitive) noexcept {
        if (size > maxWalked && (index == nullptr || index->caseSensitive != caseSensitive))
            makeIndex(caseSensitive);
        if (index != nullptr && index->caseSensitive == caseSensitive)
            return index->find(name);
        T* item = head;
        while (item != nullptr && !equalIniNames(name, nameOf(*item), caseSensitive))
            item = item->next;
        return item;
    }

    /// Takes an item out of the list.
    void remove(T* item) noexcept {
        if (index != nullptr)
            index->remove(item);
        (item->previous != nullptr ? item->previous->next : head) = item->next;
        (item->next != nullptr ? item->next->previous : tail) = item->previous;
        --size;
        lastAsked = nullptr;
    }

    /// The n-th item, counted from 1, or null. It walks from the item that it gave last, so that a loop over
    /// all positions takes one walk.
    T* at(std::uint32_t n) noexcept {
        if (n == 0 || n > size)
            return nullptr;
        if (lastAsked == nullptr) {
            lastAsked = head;
            lastPosition = 1;
        }
        for (; lastPosition < n; ++lastPosition)
            lastAsked = lastAsked->next;
        for (; lastPosition > n; --lastPosition)
            lastAsked = lastAsked->previous;
        return lastAsked;
    }

    /// Frees the index. Call it before the name of an item changes.
    void dropIndex() noexcept { index.reset(); }

private:
    /// Up to here a walk is as fast as a hash, and needs no memory.
    static constexpr std::uint32_t maxWalked = 16;

    void makeIndex(int caseSensitive) noexcept {
        index.reset(new (std::nothrow) IniIndex<T>(size, caseSensitive));
        for (T* item = head; item != nullptr && index != nullptr; item = item->next)
            if (!index->append(item))
                dropIndex();
    }

    T* head = nullptr;
    T* tail = nullptr;
    std::unique_ptr<IniIndex<T>> index;
    T* lastAsked = nullptr; ///< item that at() gave last; null: none, or it may have moved
    std::uint32_t lastPosition = 0;
    std::uint32_t size = 0;
};

} // namespace vyini

#endif
