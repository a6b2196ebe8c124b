#include "ini/IniList.h"
#include "ini/IniDocument.h"
#include <new>

namespace vyini {

template <class T>
T* IniList<T>::take(const char* name, int caseSensitive) noexcept {
    const Place place = locate(name, caseSensitive);
    if (place.item != nullptr) {
        if (index != nullptr)
            index->remove(place.slot);
        unlink(place.item);
    }
    return place.item;
}

template <class T>
T* IniList<T>::at(std::uint32_t n) noexcept {
    if (n == 0 || n > size)
        return nullptr;
    T* item = index != nullptr || useIndex(0) ? index->atPosition(n) : nullptr;
    if (item == nullptr)
        for (item = head; n > 1; --n)
            item = item->next;
    return item;
}

template <class T>
void IniList<T>::unlink(T* item) noexcept {
    (item->previous != nullptr ? item->previous->next : head) = item->next;
    (item->next != nullptr ? item->next->previous : tail) = item->previous;
    --size;
}

template <class T>
typename IniList<T>::Place IniList<T>::lookUp(const char* name, int caseSensitive) noexcept {
    if (!useIndex(caseSensitive))
        return walk(name, caseSensitive);
    const std::uint32_t hash = index->hashOf(name);
    const std::uint32_t slot = index->find(name, hash);
    return {slot != index->none ? index->itemAt(slot) : nullptr, hash, slot};
}

/// True when there is an index for this kind of comparison; makes one when the list is long enough.
template <class T>
bool IniList<T>::useIndex(int caseSensitive) noexcept {
    const int kind = caseSensitive != 0 ? 1 : 0;
    if (index != nullptr && index->caseSensitive != kind)
        index.reset();
    if (index == nullptr && size > walkedSize) {
        index.reset(new (std::nothrow) IniIndex<T>(kind));
        if (index != nullptr && !index->build(head, size))
            index.reset();
    }
    return index != nullptr;
}

template class IniList<IniSection>;
template class IniList<IniEntry>;

} // namespace vyini
