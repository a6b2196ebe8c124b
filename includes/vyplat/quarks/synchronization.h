#ifndef VYPLAT_QUARKS_SYNCHRONIZATION_H
#define VYPLAT_QUARKS_SYNCHRONIZATION_H

#include "errors/RaiseSite.h"
#include "vykel/StatusBlock.h"
#include "vytpl/NonCopyable.h"
#include <cstdint>
#include <windows.h>

namespace vyplat {

/// Where a critical section that the system cannot set up is reported.
constexpr vyerr::RaiseSite criticalSectionSite{__FILE__, 881};

/// Mutual exclusion within the process, recursive for the owning thread. At first it is not set up.
class CriticalSection : private vytpl::NonCopyableT<CriticalSection> {
public:
    /// Sets the lock up, unless `status` already holds an error. Stores MemoryFull when the system has no
    /// memory for it. Does not throw.
    void initialize(vykel::StatusBlock* status);

    /// Tears the lock down when it is set up.
    void destroy() noexcept;

    /// Only while the lock is set up.
    void enter() noexcept { EnterCriticalSection(&section); }
    void leave() noexcept { LeaveCriticalSection(&section); }

private:
    CRITICAL_SECTION section = {};
    bool initialized = false;
};

/// Holds a critical section for one scope.
class CriticalSectionGuard : private vytpl::NonCopyableT<CriticalSectionGuard> {
public:
    explicit CriticalSectionGuard(CriticalSection* section) noexcept : entered(section) { entered->enter(); }
    ~CriticalSectionGuard() { leave(); }

    /// Leaves early; the end of the scope then does nothing.
    void leave() noexcept {
        if (entered != nullptr)
            entered->leave();
        entered = nullptr;
    }

private:
    CriticalSection* entered;
};

/// Runs an initialiser until it has succeeded once, in whichever thread asks first, and then its counterpart
/// when this object is destroyed. A failed initialiser runs again at the next call. Any thread may call.
class OnceInitializer : private vytpl::NonCopyableT<OnceInitializer> {
public:
    using Initialize = void (*)(vykel::StatusBlock* status);
    using Destroy = void (*)();

    constexpr OnceInitializer(Initialize initializeOnce, Destroy destroyOnce) noexcept
        : initialize(initializeOnce), destroy(destroyOnce) {}
    ~OnceInitializer();

    /// Returns when the initialiser has run, in this or another thread. Stores its error in `status`; does
    /// nothing when `status` already holds an error.
    void run(vykel::StatusBlock* status);

    /// Whether the initialiser has succeeded.
    bool isDone() noexcept;

private:
    volatile LONG done = 0;
    volatile LONG busy = 0;
    Initialize initialize;
    Destroy destroy;
    DWORD sleepMilliseconds = 1;
};

} // namespace vyplat

#endif
