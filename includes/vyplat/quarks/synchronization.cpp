#include "vyplat/quarks/synchronization.h"

#include "errors/StatusBlocks.h"
#include "vykel/StatusCodes.h"
#include "vyplat/quarks/memoryFault.h"

namespace vyplat {

void CriticalSection::initialize(vykel::StatusBlock* status) {
    initialized = false;
    if (status->code < 0)
        return;
    initialized = completesWithoutMemoryFault(
        [](void* argument) { InitializeCriticalSection(static_cast<CRITICAL_SECTION*>(argument)); },
        &section);
    if (!initialized)
        vyerr::storeError(status, vykel::StatusCode::MemoryFull, criticalSectionSite);
}

void CriticalSection::destroy() noexcept {
    if (initialized)
        DeleteCriticalSection(&section);
    initialized = false;
}

OnceInitializer::~OnceInitializer() {
    if (InterlockedCompareExchange(&done, 0, 1) == 1)
        destroy();
}

void OnceInitializer::run(vykel::StatusBlock* status) {
    if (status->code < 0 || isDone())
        return;
    while (InterlockedCompareExchange(&busy, 1, 0) != 0)
        Sleep(sleepMilliseconds);
    if (!isDone()) {
        initialize(status);
        if (status->code >= 0)
            InterlockedExchange(&done, 1);
    }
    InterlockedExchange(&busy, 0);
}

bool OnceInitializer::isDone() noexcept {
    return InterlockedCompareExchange(&done, 0, 0) != 0;
}

} // namespace vyplat
