#ifndef VYKELDEV_DOCTOR_PROBE_H
#define VYKELDEV_DOCTOR_PROBE_H

#include "ChildProcess.h"
#include "doctor/Report.h"
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The probe of one plug-in: it is loaded, initialised, asked for a list, refreshed and unloaded by the
/// library's own units, in a child process that tells each step before it begins. Whatever the plug-in does
/// there, its parent knows how far it came.
namespace vykeldev::doctor {

/// The hidden subcommand that runs runProbe.
constexpr const char* probeCommand = "doctor-probe";

/// The child's side: writes one JSON object a line to standard output.
void runProbe(const std::string& path);

/// How far a plug-in came.
struct ProbeResult {
    Step step = Step::Load;            ///< the last one begun
    std::optional<LibraryError> error; ///< the library's, when the step failed with one
    std::optional<std::string> thrown; ///< or what was thrown
    bool listMissing = false;          ///< success was reported without a list
    bool done = false;                 ///< all steps were done
    std::vector<std::optional<std::uint32_t>> deviceNumbers;
    ChildOutcome end; ///< how the child ended

    bool failed() const noexcept { return error || thrown || listMissing; }
};

/// The parent's side. Throws Failure when no child can be started.
ProbeResult probePlugin(const std::string& path, std::chrono::milliseconds limit);

} // namespace vykeldev::doctor

#endif
