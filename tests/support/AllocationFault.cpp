#include "support/AllocationFault.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local vykeltest::AllocationFault armed;

bool strikes() noexcept {
    if (armed.countdown == 0 || --armed.countdown > 0)
        return false;
    armed.countdown = armed.onward ? 1 : 0;
    ++armed.struck;
    return true;
}

} // namespace

vykeltest::AllocationFault vykeltest::armAllocationFault(const AllocationFault& fault) {
    return std::exchange(armed, fault);
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
