#include "check/MachineLock.h"

#include "check/Rule.h"
#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "support/BoundedLock.h"

namespace vykeldev::check {
namespace {

vykel::FileStream open(const std::string& fileName) {
    try {
        return vykel::openLockFile((vykel::getConfigurationFolder() + fileName).c_str());
    } catch (const vyerr::Exception&) {
        throw Skipped{"the machine's lock file " + fileName +
                      " can be neither opened nor made; 'vykeldev doctor' tells why"};
    }
}

} // namespace

MachineLock::MachineLock(const std::string& fileName) : stream_(open(fileName)) {
    if (lockInTime(stream_.get(), [](auto) {}) != ERROR_SUCCESS)
        throw Skipped{"the machine's lock file " + fileName +
                      " cannot be locked; another process may be using it"};
}

} // namespace vykeldev::check
