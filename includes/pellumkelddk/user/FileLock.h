#ifndef PELLUMKELDDK_USER_FILELOCK_H
#define PELLUMKELDDK_USER_FILELOCK_H

#include "vybase/owners.h"

namespace vykel {

using vybase::FileStream;

/// Opens a lock file for reading, and creates it empty when it is missing; its folder must exist. The file
/// has no content and is never deleted. Never null. Throws ConfigurationFault when it can be neither
/// opened nor created.
FileStream openLockFile(const char* path);

} // namespace vykel

#endif
