#ifndef VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H
#define VYKELDEVENUM_TRADITIONALALIASTRANSFERMANAGER_H

#include <string>

namespace vykel {

/// Knows where the alias file of the older driver generation and its lock file lie.
class TraditionalAliasTransferManager {
public:
    /// Throws ResourceNotFound or MemoryFull when the configuration folder cannot be found.
    TraditionalAliasTransferManager();

private:
    std::string iniFilePath;
    std::string lockFilePath;
};

} // namespace vykel

#endif
