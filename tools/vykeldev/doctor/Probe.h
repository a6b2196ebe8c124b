#ifndef VYKELDEV_DOCTOR_PROBE_H
#define VYKELDEV_DOCTOR_PROBE_H

#include "child/ChildProcess.h"
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

/// The child's side: writes one JSON object a line to what is now standard output.
void runProbe(const std::string& path);

/// How far a plug-in came.
struct ProbeResult {
    Step step = Step::Load;            ///< the last one begun
    std::optional<Step> failedStep;    ///< the one that the library ended, for one of the three reasons below
    std::optional<LibraryError> error; ///< it failed with an error
    std::optional<std::string> thrown; ///< this was thrown
    bool listMissing = false;          ///< success was reported without a list
    bool deviceRefused = false;        ///< `error` is that of a device; the list had been refreshed
    bool done = false;                 ///< everything was unloaded again
    std::vector<std::optional<std::uint32_t>> deviceNumbers;
    ChildOutcome end; ///< how the child ended
};

/// The parent's side. Throws Failure when no child can be started.
ProbeResult probePlugin(const std::string& path, std::chrono::milliseconds limit);

} // namespace vykeldev::doctor

#endif
