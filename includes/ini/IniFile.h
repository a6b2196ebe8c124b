#ifndef INI_INIFILE_H
#define INI_INIFILE_H

#include "ini/IniMemory.h"
#include <cstddef>
#include <windows.h>

/// What loading and saving share.
namespace vyini {

/// What a directory search reports about a file.
struct IniFileFacts {
    FILETIME lastWriteTime = {};
    std::size_t size = 0;
};

/// Searches the directory for a file or folder. False when there is none; `facts` is then unchanged. Null
/// facts are allowed.
bool findFile(const char* path, IniFileFacts* facts) noexcept;

/// A copy of the first `length` bytes of a text, with room for `more` bytes after them. Null when memory is
/// short.
IniString copyText(const char* text, std::size_t length, std::size_t more = 0) noexcept;

} // namespace vyini

#endif
