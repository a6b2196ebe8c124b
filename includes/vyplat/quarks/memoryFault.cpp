#include "vyplat/quarks/memoryFault.h"

#include <windows.h>

namespace {

constexpr DWORD statusNoMemory = 0xC0000017; // STATUS_NO_MEMORY

} // namespace

// The seam between compilers: each catches a structured exception in its own way, or not at all.

#if defined(_MSC_VER)

namespace vyplat {

bool completesWithoutMemoryFault(void (*function)(void*), void* argument) {
    __try {
        function(argument);
        return true;
    } __except (GetExceptionCode() == statusNoMemory ? EXCEPTION_EXECUTE_HANDLER
                                                     : EXCEPTION_CONTINUE_SEARCH) {
        return false;
    }
}

} // namespace vyplat

#elif defined(_WIN32) && defined(__x86_64__)

// GCC has no __try: the same frame written by hand. The scope table at the end is what a compiler emits for
// __try/__except; the C runtime's __C_specific_handler interprets it. `used` keeps the filter, which only
// the table names; the `nop` keeps the return address within the guarded range.
extern "C" __attribute__((used)) LONG WINAPI vyMemoryFaultFilter(EXCEPTION_POINTERS* info, void*) {
    return info->ExceptionRecord->ExceptionCode == statusNoMemory ? EXCEPTION_EXECUTE_HANDLER
                                                                  : EXCEPTION_CONTINUE_SEARCH;
}
extern "C" int vyGuardedCall(void (*function)(void*), void* argument);
__asm__("\t.text\n"
        "\t.globl vyGuardedCall\n"
        "\t.def vyGuardedCall; .scl 2; .type 32; .endef\n"
        "\t.seh_proc vyGuardedCall\n"
        "vyGuardedCall:\n"
        "\tsubq $40, %rsp\n"
        "\t.seh_stackalloc 40\n"
        "\t.seh_endprologue\n"
        "\tmovq %rcx, %rax\n"
        "\tmovq %rdx, %rcx\n"
        "vyGuardedCall.begin:\n"
        "\tcall *%rax\n"
        "\tnop\n"
        "vyGuardedCall.end:\n"
        "\tmovl $1, %eax\n"
        "\taddq $40, %rsp\n"
        "\tret\n"
        "vyGuardedCall.fault:\n"
        "\txorl %eax, %eax\n"
        "\taddq $40, %rsp\n"
        "\tret\n"
        "\t.seh_handler __C_specific_handler, @except\n"
        "\t.seh_handlerdata\n"
        "\t.long 1\n"
        "\t.rva vyGuardedCall.begin, vyGuardedCall.end, vyMemoryFaultFilter, vyGuardedCall.fault\n"
        "\t.text\n"
        "\t.seh_endproc\n");

namespace vyplat {

bool completesWithoutMemoryFault(void (*function)(void*), void* argument) {
    return vyGuardedCall(function, argument) != 0;
}

} // namespace vyplat

#else

#include <winhost/faults.h>

namespace vyplat {

// On the host a structured exception is a C++ exception that only winhost throws.
bool completesWithoutMemoryFault(void (*function)(void*), void* argument) {
    try {
        function(argument);
        return true;
    } catch (const winhost::StructuredException& exception) {
        if (exception.code != statusNoMemory)
            throw;
        return false;
    }
}

} // namespace vyplat

#endif
