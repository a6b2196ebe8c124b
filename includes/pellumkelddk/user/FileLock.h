#ifndef PELLUMKELDDK_USER_FILELOCK_H
#define PELLUMKELDDK_USER_FILELOCK_H

#include <cstdio>
#include <memory>

namespace vykel {

struct CloseStream {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};

/// An open file stream; closed at the end of its life, which also ends every lock on it.
using FileStream = std::unique_ptr<std::FILE, CloseStream>;

/// Opens a lock file for reading, and creates it empty when it is missing; its folder must exist. The file
/// carries no content and is never deleted. Never null. Throws ConfigurationFault when it can be neither
/// opened nor created.
FileStream openLockFile(const char* path);

} // namespace vykel

#endif
