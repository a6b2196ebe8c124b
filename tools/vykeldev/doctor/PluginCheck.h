#ifndef VYKELDEV_DOCTOR_PLUGINCHECK_H
#define VYKELDEV_DOCTOR_PLUGINCHECK_H

#include "doctor/Examination.h"
#include "output/Progress.h"

namespace vykeldev::doctor {

/// Examines the registered plug-ins. Returns them in the registry's order, and adds a finding for everything
/// that is wrong. Throws Failure when the wanted one is not registered, and Stopped.
std::vector<PluginAccount> checkPlugins(const DoctorOptions& options, Findings& findings, Progress& progress);

} // namespace vykeldev::doctor

#endif
