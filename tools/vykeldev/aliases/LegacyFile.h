#ifndef VYKELDEV_ALIASES_LEGACYFILE_H
#define VYKELDEV_ALIASES_LEGACYFILE_H

#include "pellumkelddk/user/AutoIniText.h"
#include <string>

namespace vykeldev::aliases {

/// The legacy alias file, read twice: the one document for a transfer to change, the other to compare with.
class LegacyFile {
public:
    /// Reads the file while no transfer runs, and waits without limit for one that does. Makes no lock file:
    /// without one nobody has transferred yet. Throws Failure when there is a file that cannot be read,
    /// vyerr::Exception when its folder is unknown, the lock is refused or memory is short.
    LegacyFile();

    const std::string& path() const noexcept { return filePath; }
    bool exists() const noexcept { return found; }
    vyini::IniDocument& untouched() const noexcept { return *first.document(); }
    vyini::IniDocument& copy() const noexcept { return *second.document(); }

private:
    bool load(const vykel::AutoIniText& text) const;

    std::string filePath;
    vykel::AutoIniText first;
    vykel::AutoIniText second;
    bool found = false;
};

} // namespace vykeldev::aliases

#endif
