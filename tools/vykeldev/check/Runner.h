#ifndef VYKELDEV_CHECK_RUNNER_H
#define VYKELDEV_CHECK_RUNNER_H

#include "check/StageRun.h"
#include <functional>

namespace vykeldev::check {

/// What came out of all rules.
struct RunResults {
    Results results;
    bool stopped = false; ///< By Ctrl-C, before all rules were checked.
};

/// Checks the rules, one after the other, shows which one it is at, and passes each result on as soon as
/// nothing can change it. Also reports a rule that was not wanted when the check of another finds it broken.
/// Ctrl-C during a rule that alters what the plug-in keeps takes effect when that is put back. Throws Failure
/// when no child process can be started, or when this tool itself fails there.
RunResults runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult);

} // namespace vykeldev::check

#endif
