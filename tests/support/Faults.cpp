#include "support/Faults.h"

#include <cstdlib>
#include <new>

namespace vykeltest {

static thread_local AllocationFault* armed = nullptr;

AllocationFault::AllocationFault(std::size_t nth, bool allFromThere) : countdown(nth), onward(allFromThere) {
    armed = this;
}

AllocationFault::~AllocationFault() {
    armed = nullptr;
}

bool AllocationFault::strikes() noexcept {
    if (countdown == 0 || --countdown > 0)
        return false;
    countdown = onward ? 1 : 0;
    ++failures;
    return true;
}

static bool strikes() noexcept {
    return armed != nullptr && armed->strikes();
}

} // namespace vykeltest

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* memory, std::size_t size);
void* __wrap_malloc(std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    return vykeltest::strikes() ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
    return vykeltest::strikes() ? nullptr : __real_calloc(count, size);
}
void* __wrap_realloc(void* memory, std::size_t size) {
    return vykeltest::strikes() ? nullptr : __real_realloc(memory, size);
}
}

void* operator new(std::size_t size) {
    if (void* const memory = std::malloc(size)) // the wrapped one
        return memory;
    throw std::bad_alloc();
}
// Not left to a sanitizer, which would not know it for the same memory.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
