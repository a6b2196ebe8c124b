#ifndef INI_INIFILE_H
#define INI_INIFILE_H

#include "ini/IniMemory.h"
#include <cstddef>
#include <windows.h>

/// What loading and saving share.
namespace vyini {

/// What a directory search tells about a file.
struct IniFileFacts {
    FILETIME lastWriteTime = {};
    std::size_t size = 0;
};

/// Searches the directory for a file or folder. False when there is none; `facts` is then unchanged. Null
/// facts are allowed.
bool findFile(const char* path, IniFileFacts* facts) noexcept;

/// `length` bytes of a text as a text of its own, with room for `more` bytes behind it; null when memory is
/// short.
IniString copyText(const char* text, std::size_t length, std::size_t more = 0) noexcept;

} // namespace vyini

#endif
