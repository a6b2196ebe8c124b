// The stack protector's part of the runtime, for Windows. GCC's libssp would add cryptographic functions to
// the imports of the DLL, whose list is part of its contract. This file itself is compiled without the
// protector.

#define _CRT_RAND_S // rand_s
#include <cstdint>
#include <cstdlib>

extern "C" {

/// What each protected function keeps before its return address, and compares before it returns.
extern std::uintptr_t __stack_chk_guard;
std::uintptr_t __stack_chk_guard = 0;

/// Ends the process: the guard of a function was overwritten.
[[noreturn]] void __stack_chk_fail();
void __stack_chk_fail() {
    __asm__ volatile("int $0x29" : : "c"(2)); // fast fail: FAST_FAIL_STACK_COOKIE_CHECK_FAILURE
    __builtin_unreachable();
}
}

namespace {

// Whenever it runs among the initialisers of this module: nothing that is protected is on the stack then.
const bool isGuardChosen = [] {
    unsigned int low = 0;
    unsigned int high = 0;
    const bool random = rand_s(&low) == 0 && rand_s(&high) == 0;
    __stack_chk_guard = ((std::uintptr_t{high} << 32) | low) & ~std::uintptr_t{0xFF}; // a text ends at a 0
    return random;
}();

} // namespace
