#ifndef VYPLAT_QUARKS_MEMORYFAULT_H
#define VYPLAT_QUARKS_MEMORYFAULT_H

namespace vyplat {

/// Runs `function(argument)`. Returns true when it returned, false when the system raised its structured
/// exception for exhausted memory (0xC0000017) in it. Every other structured exception, and every C++
/// exception, passes on. Destructors between the raise and this call do not run: `function` must need none.
bool completesWithoutMemoryFault(void (*function)(void*), void* argument);

} // namespace vyplat

#endif
