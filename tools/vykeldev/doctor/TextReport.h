#ifndef VYKELDEV_DOCTOR_TEXTREPORT_H
#define VYKELDEV_DOCTOR_TEXTREPORT_H

#include "doctor/Report.h"
#include <iosfwd>

namespace vykeldev::doctor {

/// Prints the report for people; in colour when told so.
void printReport(std::ostream& out, const Report& report, bool colour);

} // namespace vykeldev::doctor

#endif
