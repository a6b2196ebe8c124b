#ifndef VYKELDEV_CHECK_STAGERUN_H
#define VYKELDEV_CHECK_STAGERUN_H

#include "check/Results.h"
#include "child/ChildTask.h"
#include "output/Command.h"

namespace vykeldev::check {

extern const ChildTask checkRuleTask;

/// What is asked of a check.
struct CheckOptions : CommonOptions {
    std::string path;               ///< The plug-in, absolute, UTF-8.
    double timeout = 10;            ///< A rule must begin another call within this time, in seconds.
    bool readOnly = false;          ///< Leaves out rules that alter what the plug-in keeps.
    std::vector<std::string> rules; ///< Only these, and those that they need; all when empty.
};

/// Runs a stage of the result's rule, with the notes in the result (see Subject), in a process of its own,
/// which is killed when it makes no progress for the time limit of the options. Returns the verdict and adds
/// all else to the result. Throws Failure when the process cannot be started, and Stopped by Ctrl-C, but not
/// while a rule alters something.
Verdict runStage(const CheckOptions& options, Stage stage, Result& result);

} // namespace vykeldev::check

#endif
