#ifndef ERRORS_EXCEPTION_H
#define ERRORS_EXCEPTION_H

#include "errors/RaiseSite.h"
#include "errors/Status.h"
#include "errors/StatusBlocks.h"
#include "vykel/StatusCodes.h"
#include <exception>

namespace vyerr {

/// Carries the Status of a failure. A copy takes over the code and the text; the source keeps its code but no
/// text, since a text has one owner.
class ExceptionBase {
public:
    ExceptionBase() noexcept;
    ExceptionBase(const ExceptionBase& source) noexcept;
    ExceptionBase& operator=(const ExceptionBase&) = delete;
    virtual ~ExceptionBase();

    /// The JSON text of what failed; empty when there is none.
    virtual const char* errorInfoJson() const noexcept;

    /// The carried record; the exception owns it.
    Status* status() const noexcept { return &record; }

private:
    mutable Status record; // a copy moves the text out of a const source
};

/// The exception that the library throws for every failure. It never leaves the library: see runGuarded.
class Exception : public virtual ExceptionBase, public virtual std::exception {
public:
    /// The JSON text of what failed; empty when there is none.
    const char* what() const noexcept override;
    const char* errorInfoJson() const noexcept override;
};

/// Throws an exception with the text that recordError writes.
[[noreturn]] void raiseError(std::int32_t code, const char* constantName, RaiseSite site);
[[noreturn]] void raiseError(vykel::StatusCode code, const char* constantName, RaiseSite site);

/// Throws what a record holds; the text moves into the exception, the record keeps the code.
[[noreturn]] void throwFailure(Status* status);

/// Does the same, but only when the record holds an error.
void throwIfFailed(Status* status);

/// Throws when a block holds an error; the exception has only the code.
void throwIfFailed(const StatusBlock* block);

} // namespace vyerr

#endif
