#ifndef VYKELDEV_DOCTOR_TEXTREPORT_H
#define VYKELDEV_DOCTOR_TEXTREPORT_H

#include "output/Json.h"
#include <iosfwd>

namespace vykeldev::doctor {

/// Prints a report of makeReport for people; with the devices and in colour when told so.
void printReport(std::ostream& out, const Json& report, bool devices, bool colour);

} // namespace vykeldev::doctor

#endif
