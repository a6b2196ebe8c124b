#ifndef VYKELDEV_CHILD_PROBE_H
#define VYKELDEV_CHILD_PROBE_H

#include "child/ChildTask.h"
#include "machine/LibraryError.h"
#include "machine/PluginFile.h"
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The probe of one plug-in: the library's own units load it, initialise it, ask it for a list, refresh the
/// list and unload it, in a child process that reports each step before it begins. Whatever the plug-in does
/// there, its parent knows how far it came.
namespace vykeldev {

extern const ChildTask probeTask;

/// How far a plug-in came.
struct ProbeResult {
    Step step = Step::Load;            ///< the last one begun
    std::optional<Obstacle> obstacle;  ///< how a step failed, as far as the child knows why
    std::optional<LibraryError> error; ///< the error that it failed with
    bool done = false;                 ///< everything was unloaded again
    Json devices = Json::array(); ///< token, number and alias of each; of many, texts only when asked for
    Findings oddities;            ///< of its devices; without a subject
    ChildOutcome child;           ///< how the child ended
};

/// Probes a plug-in and gives it `limit` for that. Throws Failure when no child can be started, and Stopped.
ProbeResult probePlugin(const std::string& path, std::chrono::milliseconds limit, bool wantsTexts);

} // namespace vykeldev

#endif
