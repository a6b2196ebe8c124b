#ifndef VYKELDEV_DOCTOR_BUNDLE_H
#define VYKELDEV_DOCTOR_BUNDLE_H

#include "doctor/Report.h"
#include "support/Zip.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// Writes only what support needs into one ZIP file: the account, the registrations, the state of the locks,
/// the versions, and the legacy file when there is one. Returns the entries. Replaces an existing file only
/// when told so. Throws Failure.
std::vector<ZipEntry> writeBundle(const std::string& path, const Report& report, bool replace);

} // namespace vykeldev::doctor

#endif
