#ifndef VYKELDEV_DOCTOR_JSONREPORT_H
#define VYKELDEV_DOCTOR_JSONREPORT_H

#include "doctor/Examination.h"
#include "machine/FolderReport.h"

namespace vykeldev::doctor {

/// All that the doctor saw, which schemas/doctor.schema.json describes, without the schema's version.
/// `versions` says which releases are at work, `plugins` are in the registry's order.
Json makeReport(const Json& versions, const std::vector<PluginAccount>& plugins, const FolderReport& folder);

} // namespace vykeldev::doctor

#endif
