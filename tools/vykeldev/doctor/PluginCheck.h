#ifndef VYKELDEV_DOCTOR_PLUGINCHECK_H
#define VYKELDEV_DOCTOR_PLUGINCHECK_H

#include "doctor/Progress.h"
#include "doctor/Report.h"
#include <chrono>

namespace vykeldev::doctor {

/// Accounts for every registered plug-in, in the registry's order, with one outcome each: adds it to
/// `report.plugins`, and what is wrong to `report.findings`. Gives each of them `limit`.
void checkPlugins(Report& report, std::chrono::milliseconds limit, Progress& progress);

} // namespace vykeldev::doctor

#endif
