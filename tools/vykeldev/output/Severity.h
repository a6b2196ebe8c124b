#ifndef VYKELDEV_OUTPUT_SEVERITY_H
#define VYKELDEV_OUTPUT_SEVERITY_H

#include <cstddef>

namespace vykeldev {

/// How bad it is: what the doctor finds, or when a rule of `check` is broken. The names are part of the
/// reports.
enum class Severity { Info, Warning, Error };
constexpr const char* severityNames[] = {"info", "warning", "error"};
constexpr const char* nameOf(Severity severity) noexcept {
    return severityNames[static_cast<std::size_t>(severity)];
}

} // namespace vykeldev

#endif
