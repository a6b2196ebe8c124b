#include "doctor/Bundle.h"

#include "support/Files.h"

namespace vykeldev::doctor {

std::vector<ZipEntry> writeBundle(const std::string& path, const Report& report, bool replace) {
    std::vector<ZipEntry> entries = {{"account.json", textOf(report) + '\n'},
                                     {"registrations.json", textOf(registrationsToJson(report)) + '\n'},
                                     {"locks.json", textOf(report.locks) + '\n'},
                                     {"versions.json", textOf(report.versions) + '\n'}};
    if (report.legacy.bytes)
        entries.push_back({"vykel.ini", *report.legacy.bytes});
    writeFile(path, makeZip(entries), replace);
    return entries;
}

} // namespace vykeldev::doctor
