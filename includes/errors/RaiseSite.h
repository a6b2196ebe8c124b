#ifndef ERRORS_RAISESITE_H
#define ERRORS_RAISESITE_H

#include <cstdint>

namespace vyerr {

/// Where an error is raised. Support tools search for the pair, so it never changes: `file` is the path from
/// the project's root of the unit that first raised the error (`__FILE__`, as the build maps it), `line` the
/// number that the site was given then. Both stay when the statement moves.
struct RaiseSite {
    const char* file;
    std::int32_t line;
};

/// The component that every error of this library names.
constexpr const char* componentName = "vykeldevenum";

/// The texts of "error_constant": how a raise site spells its code.
namespace constant {
constexpr const char* memoryFull = "vyplaterr_memoryFull";
constexpr const char* resourceNotFound = "vyplaterr_resourceNotFound";
constexpr const char* osFault = "vyplaterr_osFault";
constexpr const char* invalidParameter = "vyplaterr_invalidParameter";
constexpr const char* deviceEnumeration = "vykel::toInteger(code_)";
} // namespace constant

} // namespace vyerr

#endif
