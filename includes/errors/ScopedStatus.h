#ifndef ERRORS_SCOPEDSTATUS_H
#define ERRORS_SCOPEDSTATUS_H

#include "errors/Exception.h"
#include "errors/Status.h"
#include "errors/StatusBlocks.h"
#include <exception>

namespace vyerr {

/// A Status for the calls of one scope. The destructor throws a recorded error, except during unwinding: so
/// call check() before every step that needs the earlier ones. A client may call the library while its own
/// exception propagates, and that is unwinding, too. The destructor always releases the record.
class ScopedStatus {
public:
    ScopedStatus() noexcept { initStatus(&record); }
    ScopedStatus(const ScopedStatus&) = delete;
    ScopedStatus& operator=(const ScopedStatus&) = delete;

    ~ScopedStatus() noexcept(false) {
        struct Release {
            Status* record;
            ~Release() { releaseStatus(record); }
        } const release{&record};
        if (record.code < 0 && std::uncaught_exceptions() == 0)
            throwIfFailed(&record);
    }

    /// Throws at once when an error was recorded.
    void check() { throwIfFailed(&record); }

    /// The record; this object owns it.
    Status* get() noexcept { return &record; }
    Status& operator*() noexcept { return record; }

private:
    Status record;
};

/// The same for a code-only StatusBlock.
class ScopedStatusBlock {
public:
    ScopedStatusBlock() noexcept { initStatusBlock(&block); }
    ScopedStatusBlock(const ScopedStatusBlock&) = delete;
    ScopedStatusBlock& operator=(const ScopedStatusBlock&) = delete;

    ~ScopedStatusBlock() noexcept(false) {
        if (std::uncaught_exceptions() == 0)
            throwIfFailed(&block);
    }

    /// Throws at once when an error was stored.
    void check() const { throwIfFailed(&block); }

    /// The block; this object owns it.
    StatusBlock* get() noexcept { return &block; }

private:
    StatusBlock block;
};

} // namespace vyerr

#endif
