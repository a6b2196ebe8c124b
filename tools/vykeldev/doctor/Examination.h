#ifndef VYKELDEV_DOCTOR_EXAMINATION_H
#define VYKELDEV_DOCTOR_EXAMINATION_H

#include "doctor/Report.h"
#include <chrono>

namespace vykeldev::doctor {

/// Examines a plug-in whose name and path are known: looks at its file, then probes it within `limit`.
/// Completes the account, and adds a finding for everything that is wrong.
void examine(PluginAccount& plugin, std::chrono::milliseconds limit, Findings& findings);

} // namespace vykeldev::doctor

#endif
