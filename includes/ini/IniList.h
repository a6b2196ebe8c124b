#ifndef INI_INILIST_H
#define INI_INILIST_H

#include "ini/IniIndex.h"
#include "ini/IniText.h"
#include <cstdint>
#include <memory>
#include <new>

namespace vyini {

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
