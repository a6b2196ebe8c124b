#ifndef VYKELDEVENUM_CONFIGURATIONFOLDER_H
#define VYKELDEVENUM_CONFIGURATIONFOLDER_H

#include <string>

namespace vykel {

/// The machine-wide folder of the lock files and the legacy alias file, in UTF-8, with a trailing backslash.
/// It is computed, not created. Throws ResourceNotFound when the system does not tell its common data folder,
/// MemoryFull.
std::string getConfigurationFolder();

} // namespace vykel

#endif
