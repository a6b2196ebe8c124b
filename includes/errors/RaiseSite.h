#ifndef ERRORS_RAISESITE_H
#define ERRORS_RAISESITE_H

#include <cstdint>

namespace vyerr {

/// Where an error is raised. The pair is part of the error contract that support tools read: `file` is the
/// unit's path from the project's root (`__FILE__`, as the build maps it), `line` a number fixed once and
/// for all, whatever line the statement moves to.
struct RaiseSite {
    const char* file;
    std::int32_t line;
};

/// The component that every error of this library names.
constexpr const char* componentName = "vykeldevenum";

/// The texts of "error_constant": the name by which a raise site spells its code.
namespace constant {
constexpr const char* memoryFull = "vyplaterr_memoryFull";
constexpr const char* resourceNotFound = "vyplaterr_resourceNotFound";
constexpr const char* osFault = "vyplaterr_osFault";
constexpr const char* invalidParameter = "vyplaterr_invalidParameter";
constexpr const char* deviceEnumeration = "vykel::toInteger(code_)";
} // namespace constant

} // namespace vyerr

#endif
