#ifndef VYKELDEV_DOCTOR_JSONREPORT_H
#define VYKELDEV_DOCTOR_JSONREPORT_H

#include "doctor/Report.h"
#include "output/Json.h"

namespace vykeldev::doctor {

/// The report for programs; schemas/doctor.schema.json describes it.
void to_json(Json& json, const Report& report);

} // namespace vykeldev::doctor

#endif
