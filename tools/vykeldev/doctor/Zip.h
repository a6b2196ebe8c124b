#ifndef VYKELDEV_DOCTOR_ZIP_H
#define VYKELDEV_DOCTOR_ZIP_H

#include <string>
#include <vector>

namespace vykeldev::doctor {

struct ZipEntry {
    std::string name; ///< UTF-8, of at most 65535 bytes
    std::string bytes;
};

/// A ZIP archive of these files, stored without compression and without their times, in this order. The
/// whole must stay below 4 GB.
std::string makeZip(const std::vector<ZipEntry>& entries);

} // namespace vykeldev::doctor

#endif
