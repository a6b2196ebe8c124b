#ifndef VYKELDEV_CHECK_RUNNER_H
#define VYKELDEV_CHECK_RUNNER_H

#include "check/Result.h"
#include <functional>

namespace vykeldev::check {

struct RunOptions {
    std::string path;                ///< The plug-in, absolute, UTF-8.
    std::chrono::milliseconds limit; ///< For each rule.
    bool readOnly = false;           ///< Leaves out rules that alter what the plug-in keeps.
    std::vector<std::string> rules;  ///< Only these and those that they need; all when empty.
};

/// Checks the rules, one after the other, and hands each result out as soon as it is there. Throws Failure
/// when no child process can be started.
Results runRules(const RunOptions& options, const std::function<void(const Result&)>& onResult);

} // namespace vykeldev::check

#endif
