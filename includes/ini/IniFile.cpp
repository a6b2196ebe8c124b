#include "ini/IniFile.h"

#include <cstdint>

namespace vyini {

bool findFile(const char* path, IniFileFacts* facts) noexcept {
    WIN32_FIND_DATAA found;
    const HANDLE search = FindFirstFileA(path, &found);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    FindClose(search);
    if (facts != nullptr) {
        facts->lastWriteTime = found.ftLastWriteTime;
        facts->size = static_cast<std::size_t>(std::uint64_t{found.nFileSizeHigh} << 32 |
                                               std::uint64_t{found.nFileSizeLow});
    }
    return true;
}

} // namespace vyini
