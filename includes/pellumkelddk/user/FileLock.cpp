#include "pellumkelddk/user/FileLock.h"

#include "errors/Exception.h"

namespace vykel {

namespace {

constexpr vyerr::RaiseSite openSite{__FILE__, 47};

} // namespace

FileStream openLockFile(const char* path) {
    // Reading first: a user who may not write the file may still lock it.
    if (FileStream stream{std::fopen(path, "rb")})
        return stream;
    FileStream{std::fopen(path, "ab")}.reset();
    FileStream stream{std::fopen(path, "rb")};
    if (stream == nullptr)
        vyerr::raiseError(StatusCode::ConfigurationFault, vyerr::constant::deviceEnumeration, openSite);
    return stream;
}

} // namespace vykel
