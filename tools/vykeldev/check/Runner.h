#ifndef VYKELDEV_CHECK_RUNNER_H
#define VYKELDEV_CHECK_RUNNER_H

#include "check/Result.h"
#include <functional>

namespace vykeldev::check {

struct RunOptions {
    std::string path;                    ///< The plug-in, absolute, UTF-8.
    std::chrono::milliseconds limit{0};  ///< A rule must begin another call within this time.
    std::chrono::milliseconds budget{0}; ///< For the loops of one rule.
    bool readOnly = false;               ///< Leaves out rules that alter what the plug-in keeps.
    bool numberDevices = false;          ///< Gives some devices without a number one for good.
    std::vector<std::string> rules;      ///< Only these, and those that they need; all when empty.
};

struct RunResults {
    Results results;
    bool stopped = false; ///< By Ctrl-C, before all rules were checked.
};

/// Checks the rules, one after the other, shows which one it is at, and passes each result on as soon as
/// nothing can change it. Also reports a rule that was not wanted when the check of another finds it broken.
/// Ctrl-C during a rule that alters what the plug-in keeps takes effect when that is put back; at any other
/// time it ends this process. Throws Failure when no child process can be started, or when this tool itself
/// fails there.
RunResults runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult);

} // namespace vykeldev::check

#endif
