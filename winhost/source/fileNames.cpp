#include "descriptors.h"
#include "faultCheck.h"
#include "fileStatus.h"
#include "textConversion.h"
#include "winhost/crt.h"
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <vector>

using winhost::Call;
using winhost::HostPath;

namespace {

BOOL moveFile(const HostPath& from, const HostPath& to, DWORD flags) noexcept {
    const bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
    if (winhost::isHeldOpen(from)) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    if (replace && winhost::isHeldOpen(to)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), replace ? 0 : RENAME_NOREPLACE) == 0)
        return TRUE;
    const bool sourceExists = ::access(from.c_str(), F_OK) == 0;
    errno = sourceExists ? errno : ENOENT;
    winhost::setErrorFromErrno(sourceExists ? to : from);
    if (GetLastError() == ERROR_FILE_EXISTS)
        SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

bool findStatus(const HostPath& path, struct stat& status) noexcept {
    const bool found = ::stat(path.c_str(), &status) == 0;
    if (!found)
        winhost::setErrorFromErrno(path);
    return found;
}

/// `prefix` and the components of `path`, with `.` and `..` resolved by their text.
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

/// FindClose's handle: memory, so that a forgotten one shows as a leak.
struct Find {};

void give(std::string_view part, char* out, std::size_t size) noexcept {
    if (out != nullptr)
        out[part.copy(out, size - 1)] = '\0';
}

} // namespace

extern "C" {

BOOL DeleteFileW(LPCWSTR path) {
    return !winhost::fails(Call::DeleteFileW) && winhost::deleteFile(HostPath(path)) ? TRUE : FALSE;
}

BOOL MoveFileExA(LPCSTR from, LPCSTR to, DWORD flags) {
    return winhost::fails(Call::MoveFileExA) ? FALSE : moveFile(HostPath(from), HostPath(to), flags);
}

BOOL MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
    return winhost::fails(Call::MoveFileExW) ? FALSE : moveFile(HostPath(from), HostPath(to), flags);
}

DWORD GetFileAttributesW(LPCWSTR path) {
    struct stat status = {};
    const bool found = !winhost::fails(Call::GetFileAttributesW) && findStatus(HostPath(path), status);
    return found ? winhost::fileAttributes(status) : INVALID_FILE_ATTRIBUTES;
}

BOOL GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS, LPVOID data) {
    struct stat status = {};
    if (winhost::fails(Call::GetFileAttributesExW) || !findStatus(HostPath(path), status))
        return FALSE;
    winhost::describe(status, *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data));
    return TRUE;
}

DWORD GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* name) {
    if (winhost::fails(Call::GetFullPathNameW))
        return 0;
    if (path == nullptr || *path == u'\0') {
        SetLastError(ERROR_INVALID_NAME);
        return 0;
    }
    return winhost::guardMemory(DWORD{0}, [&] {
        const std::u16string full = fullPath(path);
        const DWORD length = static_cast<DWORD>(full.size());
        if (length >= size)
            return length + 1;
        buffer[full.copy(buffer, length)] = u'\0';
        if (name != nullptr) {
            const std::size_t at = full.find_last_of(u"\\/") + 1;
            *name = at < length ? buffer + at : nullptr;
        }
        return length;
    });
}

HANDLE FindFirstFileA(LPCSTR path, LPWIN32_FIND_DATAA data) {
    struct stat status = {};
    if (winhost::fails(Call::FindFirstFileA) || !findStatus(HostPath(path), status))
        return INVALID_HANDLE_VALUE;
    const std::string_view text(path);
    const std::string_view name = text.substr(text.find_last_of("\\/") + 1);
    if (name.empty()) { // a folder is found by its name, not by its separator
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    Find* const find = new (std::nothrow) Find;
    if (find == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return INVALID_HANDLE_VALUE;
    }
    *data = {};
    winhost::describe(status, *data);
    give(name, data->cFileName, sizeof data->cFileName);
    winhost::countResources(+1);
    return find;
}

BOOL FindClose(HANDLE find) {
    delete static_cast<Find*>(find);
    winhost::countResources(-1);
    return winhost::fails(Call::FindClose) ? FALSE : TRUE;
}

void _splitpath(const char* path, char* drive, char* directory, char* name, char* extension) {
    std::string_view rest(path);
    const std::size_t driveEnd = rest.size() > 1 && rest[1] == ':' ? 2 : 0;
    give(rest.substr(0, driveEnd), drive, _MAX_DRIVE);
    rest.remove_prefix(driveEnd);
    const std::size_t nameBegin = rest.find_last_of("\\/") + 1;
    give(rest.substr(0, nameBegin), directory, _MAX_DIR);
    rest.remove_prefix(nameBegin);
    const std::size_t dot = std::min(rest.rfind('.'), rest.size());
    give(rest.substr(0, dot), name, _MAX_FNAME);
    give(rest.substr(dot), extension, _MAX_EXT);
}
}
