#ifndef VYKELDEV_DOCTOR_BUNDLE_H
#define VYKELDEV_DOCTOR_BUNDLE_H

#include "doctor/Report.h"
#include "support/Zip.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// Writes what support needs, and nothing else, into one ZIP file: account, registrations, lock state,
/// versions, and the legacy file when there is one. Returns what it put in. An existing file is replaced only
/// when told so. Throws Failure.
std::vector<ZipEntry> writeBundle(const std::string& path, const Report& report, bool replace);

} // namespace vykeldev::doctor

#endif
