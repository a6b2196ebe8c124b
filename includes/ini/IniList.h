#ifndef INI_INILIST_H
#define INI_INILIST_H

#include "ini/IniIndex.h"
#include <cstdint>
#include <memory>

namespace vyini {

/// An ordered list of named items that it does not own, linked through their `next` and `previous`. Walk it
/// with first() and `next`. Names may repeat. A list of more than a few items makes itself an index when it
/// is first searched; without memory for one it is walked, so that a search never fails. One thread. There
/// are lists of sections and of entries.
template <class T>
class IniList {
public:
    T* first() const noexcept { return head; }
    std::uint32_t count() const noexcept { return size; }

    void append(T* item) noexcept { appendHashed(item, index != nullptr ? index->hashOf(nameOf(*item)) : 0); }

    /// The first item whose name compares equal (compareIniNames) to one that is not null, or null.
    T* find(const char* name, int caseSensitive) noexcept { return locate(name, caseSensitive).item; }

    /// find(), or when there is no such item, the item that `make` gives, appended. Its name must be `name`.
    /// Null when `make` gives null.
    template <class Make>
    T* findOrAppend(const char* name, int caseSensitive, Make make) noexcept {
        const Place place = locate(name, caseSensitive);
        if (place.item != nullptr)
            return place.item;
        T* item = make();
        if (item != nullptr)
            appendHashed(item, place.hash);
        return item;
    }

    /// Takes the item that find() would give out of the list, or gives null.
    T* take(const char* name, int caseSensitive) noexcept;

    /// The n-th item, counted from 1, or null.
    T* at(std::uint32_t n) noexcept;

    /// Takes out an item in the course of changes after which dropIndex() is called.
    void unlink(T* item) noexcept;

    /// Must follow every change of the list or of names that is not made through append() and take().
    void dropIndex() noexcept { index.reset(); }

private:
    /// What a search finds out.
    struct Place {
        T* item;
        std::uint32_t hash; ///< of the name, when there is an index
        std::uint32_t slot; ///< of the item, when there is an index
    };

    static constexpr std::uint32_t walkedSize =
        16; // up to here a walk is as fast as a hash, and needs no memory

    Place locate(const char* name, int caseSensitive) noexcept {
        return index == nullptr && size <= walkedSize ? walk(name, caseSensitive)
                                                      : lookUp(name, caseSensitive);
    }

    Place walk(const char* name, int caseSensitive) const noexcept {
        T* item = head;
        while (item != nullptr && !equalIniNames(name, nameOf(*item), caseSensitive))
            item = item->next;
        return {item, 0, 0};
    }

    Place lookUp(const char* name, int caseSensitive) noexcept;
    bool useIndex(int caseSensitive) noexcept;

    void appendHashed(T* item, std::uint32_t hash) noexcept {
        item->previous = tail;
        item->next = nullptr;
        (tail != nullptr ? tail->next : head) = item;
        tail = item;
        ++size;
        if (index != nullptr && !index->append(item, hash))
            index.reset();
    }

    T* head = nullptr;
    T* tail = nullptr;
    std::unique_ptr<IniIndex<T>> index;
    std::uint32_t size = 0;
};

} // namespace vyini

#endif
