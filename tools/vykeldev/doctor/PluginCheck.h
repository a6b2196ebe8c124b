#ifndef VYKELDEV_DOCTOR_PLUGINCHECK_H
#define VYKELDEV_DOCTOR_PLUGINCHECK_H

#include "doctor/Examination.h"
#include "doctor/Report.h"
#include "output/Progress.h"
#include <chrono>

namespace vykeldev::doctor {

/// Examines the registered plug-ins. Fills `report.plugins`, and adds a finding for everything that is wrong.
/// Throws Failure when the wanted one is not registered, and Stopped.
void checkPlugins(Report& report, const ExaminationOptions& options, Progress& progress);

} // namespace vykeldev::doctor

#endif
