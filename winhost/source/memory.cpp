// Part of every program that links winhost_memory: its allocations can be made to fail, as calls of the
// system can.

#include "faultCheck.h"
#include <cstdlib>

static bool strikes() noexcept {
    return winhost::faultOf(winhost::Call::malloc) != 0;
}

extern "C" {

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return strikes() ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return strikes() ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, std::size_t size) {
    return strikes() ? nullptr : __real_realloc(memory, size);
}
}

void* operator new(std::size_t size) {
    if (void* const memory = __wrap_malloc(size))
        return memory;
    throw std::bad_alloc();
}
// Defined here, too: a sanitizer's own would not match the operator delete below.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return __wrap_malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
