#include "ConfigurationFolder.h"

#include "errors/ScopedStatus.h"
#include "vysys/stdpath.h"

namespace vykel {

std::string getConfigurationFolder() {
    vyerr::ScopedStatus status;
    std::string folder;
    vysys::getSharedDataFolder(folder, *status);
    status.check();
    folder += "\\VY-KEL\\";
    return folder;
}

} // namespace vykel
