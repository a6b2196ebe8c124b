#ifndef VYPLAT_QUARKS_SYNCHRONIZATION_H
#define VYPLAT_QUARKS_SYNCHRONIZATION_H

#include "errors/RaiseSite.h"
#include "vykel/StatusBlock.h"
#include "vytpl/NonCopyable.h"
#include <utility>
#include <windows.h>

namespace vyplat {

/// The raise site of the error that CriticalSection::initialize stores.
constexpr vyerr::RaiseSite criticalSectionSite{__FILE__, 881};

/// Mutual exclusion within the process, recursive for the owning thread. At first it is not set up.
class CriticalSection : private vytpl::NonCopyableT<CriticalSection> {
public:
    /// Sets the lock up, unless `status` already holds an error. Stores MemoryFull when the system has no
    /// memory for it. Does not throw.
    void initialize(vykel::StatusBlock* status);

    /// Tears the lock down when it is set up.
    void destroy() noexcept;

    /// Waits for the lock and takes it. Call it only while the lock is set up.
    void enter() noexcept { EnterCriticalSection(&section); }
    /// Gives the lock back; only the thread that took it may call.
    void leave() noexcept { LeaveCriticalSection(&section); }

private:
    CRITICAL_SECTION section = {};
    bool initialized = false;
};

/// Holds a critical section for one scope; with a null pointer it holds nothing.
class CriticalSectionGuard : private vytpl::NonCopyableT<CriticalSectionGuard> {
public:
    explicit CriticalSectionGuard(CriticalSection* section) noexcept : entered(section) {
        if (entered != nullptr)
            entered->enter();
    }
    ~CriticalSectionGuard() {
        if (entered != nullptr)
            std::exchange(entered, nullptr)->leave();
    }

private:
    CriticalSection* entered; ///< null after it was left
};

/// Runs an initialiser until it has succeeded once, in the thread that asks first. A failed one runs again at
/// the next call. After a success, the end of this object runs the initialiser's counterpart. Any thread may
/// call.
class OnceInitializer : private vytpl::NonCopyableT<OnceInitializer> {
public:
    /// The initialiser; it stores an error in `status` when it fails.
    using Initialize = void (*)(vykel::StatusBlock* status);
    /// Its counterpart.
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
    volatile LONG done = 0; ///< 1: the initialiser has succeeded
    volatile LONG busy = 0; ///< 1: a thread is in run()
    Initialize initialize;
    Destroy destroy;
    DWORD sleepMilliseconds = 1; ///< between two attempts to take `busy`
};

} // namespace vyplat

#endif
