#include "TraditionalAliasTransferManager.h"

#include "ConfigurationFolder.h"

namespace vykel {

TraditionalAliasTransferManager::TraditionalAliasTransferManager()
    : iniFilePath(getConfigurationFolder()), lockFilePath(iniFilePath) {
    iniFilePath += "vykel.ini";
    lockFilePath += "vykel.lck";
}

} // namespace vykel
