#ifndef VYKELDEV_CHECK_STAGERUN_H
#define VYKELDEV_CHECK_STAGERUN_H

#include "check/Results.h"
#include "child/ChildTask.h"

namespace vykeldev::check {

extern const ChildTask checkRuleTask;

/// What is asked of a check.
struct RunOptions {
    std::string path;                   ///< The plug-in, absolute, UTF-8.
    std::chrono::milliseconds limit{0}; ///< A rule must begin another call within this time.
    bool quiet = false;                 ///< Shows no progress.
    bool readOnly = false;              ///< Leaves out rules that alter what the plug-in keeps.
    std::vector<std::string> rules;     ///< Only these, and those that they need; all when empty.
};

/// A rule that turned out to be broken, perhaps while another was checked.
struct Incident {
    std::string rule;
    std::string observed;
};

/// What came out of one stage of a rule.
struct Account : Result {
    bool ended = false;             ///< The check told its outcome.
    std::vector<std::string> notes; ///< For the next stage.
    bool putBack = false;           ///< What was altered is as it was before.
    std::string toolFailed;         ///< How this tool itself failed there, if it did.
    std::vector<Incident> incidents;
};

/// Runs a stage of a rule, with notes for it (see Subject), in a process of its own, which is killed when it
/// makes no progress for the time limit of the options. Throws Failure when it cannot be started, and Stopped
/// by Ctrl-C, but not while a rule alters something.
Account runStage(const Rule& rule, const RunOptions& options, Stage stage,
                 const std::vector<std::string>& notes);

} // namespace vykeldev::check

#endif
