#ifndef INI_INIMEMORY_H
#define INI_INIMEMORY_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace vyini {

/// Frees what malloc allocated.
struct IniFree {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// An owned, NUL-terminated text.
using IniString = std::unique_ptr<char, IniFree>;

/// A copy of the first `length` bytes of a text, with room for `more` bytes after them. Null when memory is
/// short.
inline IniString copyText(const char* text, std::size_t length, std::size_t more = 0) noexcept {
    IniString copy(static_cast<char*>(std::malloc(length + more + 1)));
    if (copy != nullptr) {
        std::memcpy(copy.get(), text, length);
        copy.get()[length] = '\0';
    }
    return copy;
}

/// An owned array of plain values.
template <class T>
using IniArray = std::unique_ptr<T[], IniFree>;

/// An array of `count` zeros, or null when memory is short.
template <class T>
IniArray<T> makeIniArray(std::size_t count) noexcept {
    return IniArray<T>(static_cast<T*>(std::calloc(count, sizeof(T))));
}

/// Blocks of memory that are freed together. Their content never moves. One thread uses them.
class IniBlocks {
public:
    IniBlocks() noexcept = default;
    ~IniBlocks() { clear(); }
    IniBlocks(IniBlocks&& other) noexcept : newest(std::exchange(other.newest, nullptr)) {}
    IniBlocks& operator=(IniBlocks&& other) noexcept {
        std::swap(newest, other.newest);
        return *this;
    }

    /// A new block of `size` bytes, or null when memory is short.
    char* add(std::size_t size) noexcept {
        void* memory = std::malloc(sizeof(Block) + size);
        if (memory == nullptr)
            return nullptr;
        newest = new (memory) Block{newest};
        return static_cast<char*>(memory) + sizeof(Block);
    }

    /// Frees all blocks.
    void clear() noexcept {
        while (newest != nullptr)
            std::free(std::exchange(newest, newest->older));
    }

private:
    struct Block {
        Block* older;
    };
    Block* newest = nullptr;
};

/// Hands out items of one type from blocks, and uses the place of a released item again. That takes half the
/// time of an allocation for each item. Items still alive when the pool ends or is cleared are not destroyed.
/// One thread uses it.
template <class T>
class IniPool {
public:
    /// A new item, or null when memory is short.
    T* make() noexcept {
        void* place = spare != nullptr ? std::exchange(spare, spare->next) : takeFresh();
        return place != nullptr ? new (place) T() : nullptr;
    }

    /// Destroys an item of this pool.
    void release(T* item) noexcept {
        item->~T();
        spare = new (item) Spare{spare};
    }

    /// Frees the memory of all items.
    void clear() noexcept { *this = {}; }

private:
    struct Spare {
        Spare* next;
    };
    static_assert(sizeof(T) >= sizeof(Spare) && alignof(T) <= alignof(Spare));
    static constexpr std::size_t maxBlockItems = 512;

    void* takeFresh() noexcept {
        if (fresh == freshEnd) {
            char* block = blocks.add(blockItems * sizeof(T));
            if (block == nullptr)
                return nullptr;
            fresh = block;
            freshEnd = block + blockItems * sizeof(T);
            blockItems = std::min(2 * blockItems, maxBlockItems);
        }
        return std::exchange(fresh, fresh + sizeof(T));
    }

    IniBlocks blocks;
    Spare* spare = nullptr;
    char* fresh = nullptr; ///< the rest of the newest block, never used yet
    char* freshEnd = nullptr;
    std::size_t blockItems = 4; ///< in the next block
};

} // namespace vyini

#endif
