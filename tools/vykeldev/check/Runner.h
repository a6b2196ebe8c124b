#ifndef VYKELDEV_CHECK_RUNNER_H
#define VYKELDEV_CHECK_RUNNER_H

#include "check/StageRun.h"
#include <functional>

namespace vykeldev::check {

/// Checks the rules, one after the other, shows which one it is at, and passes each result on as soon as
/// nothing can change it. Also reports a rule that was not wanted when the check of another finds it broken.
/// Ctrl-C leaves out the rules that are not checked yet; during a rule that alters what the plug-in keeps it
/// takes effect when that is put back. Throws Failure when no child process can be started, or when this tool
/// itself fails there.
Results runRules(const Context& context, const CheckOptions& options,
                 const std::function<void(const Result&)>& onResult);

} // namespace vykeldev::check

#endif
