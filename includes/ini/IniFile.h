#ifndef INI_INIFILE_H
#define INI_INIFILE_H

#include <cstddef>
#include <windows.h>

/// What loading and saving share.
namespace vyini {

/// What a directory search reports about a file.
struct IniFileFacts {
    FILETIME lastWriteTime = {};
    std::size_t size = 0;
};

/// Searches the directory for a file or folder. False, with `facts` unchanged, when it finds none; the
/// system's last error then says why. `facts` may be null.
bool findFile(const char* path, IniFileFacts* facts) noexcept;

} // namespace vyini

#endif
