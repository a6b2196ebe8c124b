#ifndef INI_INIMEMORY_H
#define INI_INIMEMORY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace vyini {

/// Gives back what malloc gave.
struct IniFree {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// An owned, NUL-terminated text.
using IniString = std::unique_ptr<char, IniFree>;

/// An owned array of plain values.
template <class T>
using IniArray = std::unique_ptr<T[], IniFree>;

/// `count` zeros, or null when memory is short.
template <class T>
IniArray<T> makeIniArray(std::size_t count) noexcept {
    return IniArray<T>(static_cast<T*>(std::calloc(count, sizeof(T))));
}

/// Blocks of text, freed together. Text in them never moves.
class IniTextBlocks {
public:
    IniTextBlocks() noexcept = default;
    ~IniTextBlocks() { clear(); }
    IniTextBlocks(IniTextBlocks&& other) noexcept : newest(std::exchange(other.newest, nullptr)) {}
    IniTextBlocks& operator=(IniTextBlocks&& other) noexcept {
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

/// Hands out items of one type from blocks that grow with their number up to a limit, and hands out again
/// what is given back. One thread. Items still alive when the pool ends or is cleared are not destroyed.
template <class T>
class IniPool {
public:
    IniPool() noexcept = default;
    ~IniPool() { clear(); }
    IniPool(const IniPool&) = delete;
    IniPool& operator=(const IniPool&) = delete;

    /// A new item, or null when memory is short.
    T* make() noexcept {
        if (spare != nullptr) {
            void* place = spare;
            spare = spare->next;
            return new (place) T();
        }
        if (fresh == freshEnd && !addBlock())
            return nullptr;
        void* place = fresh;
        fresh += sizeof(T);
        return new (place) T();
    }

    /// Destroys an item of this pool.
    void release(T* item) noexcept {
        item->~T();
        spare = new (item) Spare{spare};
    }

    /// Frees the memory of all items.
    void clear() noexcept {
        while (blocks != nullptr)
            std::free(std::exchange(blocks, blocks->next));
        spare = nullptr;
        fresh = freshEnd = nullptr;
        items = 0;
    }

private:
    struct Spare {
        Spare* next;
    };
    static_assert(sizeof(T) >= sizeof(Spare) && alignof(T) <= alignof(Spare));
    static constexpr std::size_t smallestBlock = 4;
    static constexpr std::size_t largestBlock = 512;

    bool addBlock() noexcept {
        const std::size_t blockItems = std::clamp(items / 2, smallestBlock, largestBlock);
        void* memory = std::malloc(sizeof(Spare) + blockItems * sizeof(T));
        if (memory == nullptr)
            return false;
        blocks = new (memory) Spare{blocks};
        fresh = static_cast<unsigned char*>(memory) + sizeof(Spare);
        freshEnd = fresh + blockItems * sizeof(T);
        items += blockItems;
        return true;
    }

    Spare* blocks = nullptr; // each begins with the link to the one before
    Spare* spare = nullptr;
    unsigned char* fresh = nullptr;
    unsigned char* freshEnd = nullptr;
    std::size_t items = 0; // in all blocks
};

} // namespace vyini

#endif
