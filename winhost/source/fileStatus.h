#ifndef WINHOST_FILESTATUS_H
#define WINHOST_FILESTATUS_H

#include "winhost/files.h"
#include <sys/stat.h>

namespace winhost {

inline FILETIME fileTime(const timespec& time) noexcept {
    constexpr ULONGLONG secondsFrom1601 = 11644473600;
    const ULONGLONG ticks = (static_cast<ULONGLONG>(time.tv_sec) + secondsFrom1601) * 10000000 +
                            static_cast<ULONGLONG>(time.tv_nsec) / 100;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
}

inline DWORD fileAttributes(const struct stat& status) noexcept {
    const DWORD kind = S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    return kind | ((status.st_mode & S_IWUSR) == 0 ? FILE_ATTRIBUTE_READONLY : 0);
}

/// Fills the fields that WIN32_FIND_DATAA and WIN32_FILE_ATTRIBUTE_DATA have in common.
template <class Data>
void describe(const struct stat& status, Data& data) noexcept {
    data.dwFileAttributes = fileAttributes(status);
    data.ftCreationTime = fileTime(status.st_mtim);
    data.ftLastAccessTime = fileTime(status.st_atim);
    data.ftLastWriteTime = fileTime(status.st_mtim);
    data.nFileSizeHigh = static_cast<DWORD>(static_cast<ULONGLONG>(status.st_size) >> 32U);
    data.nFileSizeLow = static_cast<DWORD>(status.st_size);
}

} // namespace winhost

#endif
