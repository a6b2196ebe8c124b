#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "textConversion.h"
#include "winhost/files.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using winhost::Call;
using winhost::HostPath;

std::string winhost::hostPath(const std::string& path) {
    return HostPath(path.c_str()).c_str();
}

namespace {

/// The common part of both MoveFileEx calls.
BOOL moveFile(const HostPath& from, const HostPath& to) noexcept {
    if (winhost::isHeldOpen(from)) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    if (winhost::isHeldOpen(to)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (std::rename(from.c_str(), to.c_str()) == 0)
        return TRUE;
    const bool sourceExists = ::access(from.c_str(), F_OK) == 0;
    errno = sourceExists ? errno : ENOENT;
    winhost::setErrorFromErrno(sourceExists ? to : from);
    return FALSE;
}

bool findStatus(const HostPath& path, struct stat& status) noexcept {
    const bool found = ::stat(path.c_str(), &status) == 0;
    if (!found)
        winhost::setErrorFromErrno(path);
    return found;
}

/// `prefix` and the components of `path`; `.` and `..` are resolved without a look at the disk.
std::u16string normalized(std::u16string prefix, std::u16string_view path, std::u16string_view separators) {
    std::vector<std::u16string_view> parts;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find_first_of(separators), path.size());
        const std::u16string_view part = path.substr(0, length);
        path.remove_prefix(std::min(length + 1, path.size()));
        if (part == u"..")
            parts.resize(parts.empty() ? 0 : parts.size() - 1);
        else if (!part.empty() && part != u".")
            parts.push_back(part);
    }
    const std::size_t root = prefix.size();
    for (const std::u16string_view part : parts)
        prefix.append(prefix.size() > root ? 1 : 0, separators[0]).append(part);
    return prefix;
}

std::u16string fullPath(std::u16string_view path) {
    if (path.size() > 1 && path[1] == u':')
        return normalized(std::u16string(path.substr(0, 2)) + u'\\', path.substr(2), u"\\/");
    std::u16string absolute(path);
    char folder[PATH_MAX];
    if (path.front() != u'/' && ::getcwd(folder, sizeof folder) != nullptr)
        absolute = winhost::toUtf16(folder) + u'/' + absolute;
    return normalized(u"/", absolute, u"/");
}

DWORD fileAttributes(const struct stat& status) noexcept {
    const DWORD kind = S_ISLNK(status.st_mode)   ? FILE_ATTRIBUTE_REPARSE_POINT
                       : S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY
                                                 : FILE_ATTRIBUTE_ARCHIVE;
    return kind | ((status.st_mode & S_IWUSR) == 0 ? FILE_ATTRIBUTE_READONLY : 0);
}

/// Copies a path as the calls do that report how long it is.
DWORD copyPath(const std::u16string& path, DWORD size, LPWSTR buffer) noexcept {
    const DWORD length = static_cast<DWORD>(path.size());
    if (length >= size)
        return length + 1;
    buffer[path.copy(buffer, length)] = u'\0';
    return length;
}

WIN32_FILE_ATTRIBUTE_DATA attributeData(const struct stat& status) noexcept {
    constexpr ULONGLONG secondsFrom1601 = 11644473600;
    const ULONGLONG time = (static_cast<ULONGLONG>(status.st_mtim.tv_sec) + secondsFrom1601) * 10000000 +
                           static_cast<ULONGLONG>(status.st_mtim.tv_nsec) / 100;
    const ULONGLONG size = static_cast<ULONGLONG>(status.st_size);
    return {{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32U)},
            static_cast<DWORD>(size >> 32U),
            static_cast<DWORD>(size)};
}

/// What a find's handle points to. It is allocated, so that a missing FindClose shows as a memory leak.
struct Find {};

} // namespace

extern "C" {

BOOL DeleteFileW(LPCWSTR path) {
    return !winhost::fails(Call::DeleteFileW) && winhost::deleteFile(HostPath(path)) ? TRUE : FALSE;
}

BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD) {
    return winhost::fails(Call::MoveFileExA) ? FALSE : moveFile(HostPath(from), HostPath(to));
}

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
    const bool flushes = (flags & MOVEFILE_WRITE_THROUGH) != 0;
    if (winhost::fails(Call::MoveFileExW) || (flushes && winhost::fails(Call::FlushFileBuffers)))
        return FALSE;
    return moveFile(HostPath(from), HostPath(to));
}

DWORD GetFileAttributesW(LPCWSTR path) {
    struct stat status = {};
    const bool found = !winhost::fails(Call::GetFileAttributesW) && findStatus(HostPath(path), status);
    return found ? fileAttributes(status) : INVALID_FILE_ATTRIBUTES;
}

BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID data) {
    struct stat status = {};
    if (winhost::fails(Call::GetFileAttributesExW) || !findStatus(HostPath(path), status))
        return FALSE;
    *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = attributeData(status);
    return TRUE;
}

DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR*) {
    if (winhost::fails(Call::GetFullPathNameW))
        return 0;
    if (path == nullptr || *path == u'\0') {
        SetLastError(ERROR_INVALID_NAME);
        return 0;
    }
    return winhost::guardMemory(DWORD{0}, [&] { return copyPath(fullPath(path), size, buffer); });
}

BOOL GetFileInformationByHandle(HANDLE file, LPBY_HANDLE_FILE_INFORMATION information) {
    if (winhost::fails(Call::GetFileInformationByHandle))
        return FALSE;
    struct stat status = {};
    if (::fstat(winhost::descriptorOf(file), &status) != 0) {
        winhost::setErrorFromErrno();
        return FALSE;
    }
    *information = {fileAttributes(status), static_cast<DWORD>(status.st_dev),
                    static_cast<DWORD>(status.st_nlink), static_cast<DWORD>(status.st_ino >> 32U),
                    static_cast<DWORD>(status.st_ino)};
    return TRUE;
}

DWORD GetFinalPathNameByHandleW(HANDLE file, LPWSTR buffer, DWORD size, DWORD) {
    if (winhost::fails(Call::GetFinalPathNameByHandleW))
        return 0;
    char link[32];
    char path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", winhost::descriptorOf(file));
    const ssize_t length = ::readlink(link, path, sizeof path);
    if (length < 0) {
        winhost::setErrorFromErrno();
        return 0;
    }
    return winhost::guardMemory(DWORD{0}, [&] {
        return copyPath(winhost::toUtf16({path, static_cast<std::size_t>(length)}), size, buffer);
    });
}

HANDLE FindFirstFileA(LPCSTR path, WIN32_FIND_DATAA* data) {
    struct stat status = {};
    if (winhost::fails(Call::FindFirstFileA) || !findStatus(HostPath(path), status))
        return INVALID_HANDLE_VALUE;
    const std::string_view text(path);
    if (text.back() == '/' || text.back() == '\\') { // Windows finds a folder only without a separator
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    Find* const find = new (std::nothrow) Find;
    if (find == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    *data = attributeData(status);
    winhost::countResources(+1);
    return find;
}

BOOL FindClose(HANDLE find) {
    delete static_cast<Find*>(find);
    winhost::countResources(-1);
    return winhost::fails(Call::FindClose) ? FALSE : TRUE;
}
}
