#ifndef VYKELDEVENUM_CONFIGURATIONFOLDER_H
#define VYKELDEVENUM_CONFIGURATIONFOLDER_H

#include <string>

namespace vykel {

/// The machine-wide folder of the lock files and the legacy alias file, in UTF-8, with a trailing backslash.
/// This only forms the path: the folder may be missing. Throws ResourceNotFound when the system names no
/// common data folder, and MemoryFull.
std::string getConfigurationFolder();

} // namespace vykel

#endif
