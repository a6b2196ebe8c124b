#ifndef VYKELDEV_DOCTOR_EXAMINATION_H
#define VYKELDEV_DOCTOR_EXAMINATION_H

#include "doctor/Report.h"
#include <chrono>

namespace vykeldev::doctor {

/// How plug-ins are examined.
struct ExaminationOptions {
    std::string name;                ///< Of the only one to look at; empty: all.
    std::chrono::milliseconds limit; ///< For each.
    bool wantsTexts;                 ///< Of all devices.
};

/// Examines a plug-in whose name and path are known: looks at its file, then probes it. Completes the
/// account, and adds a finding for everything that is wrong. Throws Stopped.
void examine(PluginAccount& plugin, const ExaminationOptions& options, Findings& findings);

} // namespace vykeldev::doctor

#endif
