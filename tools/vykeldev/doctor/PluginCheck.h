#ifndef VYKELDEV_DOCTOR_PLUGINCHECK_H
#define VYKELDEV_DOCTOR_PLUGINCHECK_H

#include "doctor/Report.h"
#include "output/Progress.h"
#include <chrono>

namespace vykeldev::doctor {

/// Examines every registered plug-in, each within `limit`. Fills `report.plugins`, and adds a finding for
/// everything that is wrong.
void checkPlugins(Report& report, std::chrono::milliseconds limit, Progress& progress);

} // namespace vykeldev::doctor

#endif
