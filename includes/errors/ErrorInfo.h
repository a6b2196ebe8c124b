#ifndef ERRORS_ERRORINFO_H
#define ERRORS_ERRORINFO_H

#include "errors/RaiseSite.h"
#include "errors/Status.h"
#include <cstdint>

namespace vyerr {

/// Records one error, and then the fields that only its raise site knows. The constructor does what
/// recordError does; each later field goes to the end of the document. When the record already held an error
/// or memory is short, this field and all later ones are silently left out. Borrows the record, which must
/// outlive it. One thread uses it.
class ErrorInfo {
public:
    ErrorInfo(Status& status, std::int32_t code, const char* constantName, RaiseSite site) noexcept;

    /// Each appends one field.
    ErrorInfo& addString(const char* key, const char* value) noexcept;
    ErrorInfo& addInt(const char* key, std::int32_t value) noexcept;
    ErrorInfo& addUInt(const char* key, std::uint32_t value) noexcept;

    /// Begins a new object: the fields up to the matching closeObject go into it.
    ErrorInfo& openObject(const char* key) noexcept;
    /// Ends the object that openObject began last.
    ErrorInfo& closeObject() noexcept;

private:
    Status& status;
    char* cursor = nullptr;
};

/// What every raise site does: unless the record already holds an error, stores the code and writes the
/// fields "error_constant", "file", "line" and "component".
void recordError(Status* status, std::int32_t code, const char* constantName, const char* file,
                 std::int32_t line) noexcept;

} // namespace vyerr

#endif
