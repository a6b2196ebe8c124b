#ifndef VYKELDEV_DOCTOR_PLUGINCHECK_H
#define VYKELDEV_DOCTOR_PLUGINCHECK_H

#include "doctor/Progress.h"
#include "doctor/Report.h"
#include <chrono>

namespace vykeldev::doctor {

/// Examines every registered plug-in, each within `limit`: adds its account to `report.plugins`, and what is
/// wrong to `report.findings`.
void checkPlugins(Report& report, std::chrono::milliseconds limit, Progress& progress);

} // namespace vykeldev::doctor

#endif
