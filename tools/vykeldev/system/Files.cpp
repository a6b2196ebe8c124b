#include "system/Files.h"

#include "system/System.h"
#include "system/Text.h"
#include <algorithm>
#include <vector>

namespace vykeldev {

FileHandle openFile(const std::string& path, DWORD access, DWORD disposition, DWORD flags, DWORD share,
                    SECURITY_ATTRIBUTES* security) {
    const HANDLE file =
        CreateFileW(toWide(path).c_str(), access, share, security, disposition, flags, nullptr);
    return FileHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

FileHandle openItself(const std::string& path, DWORD access) {
    return openFile(path, access, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS,
                    FILE_SHARE_READ | FILE_SHARE_WRITE);
}

std::string linkText(const std::string& path) {
    BY_HANDLE_FILE_INFORMATION facts = {};
    const FileHandle file = openItself(path, 0);
    if (!file || !GetFileInformationByHandle(file.get(), &facts))
        return {};
    if ((facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0)
        return "a link";
    const bool isFolder = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return !isFolder && facts.nNumberOfLinks > 1 ? concat("a file with ", facts.nNumberOfLinks, " names")
                                                 : "";
}

std::string fileIdentity(const std::string& path) {
    BY_HANDLE_FILE_INFORMATION facts = {};
    const FileHandle file = isOrdinaryFile(path) ? openFile(path, 0, OPEN_EXISTING) : nullptr;
    if (!file || !GetFileInformationByHandle(file.get(), &facts) ||
        (facts.nFileIndexHigh == 0 && facts.nFileIndexLow == 0)) // a file system without numbers
        return {};
    return concat(facts.dwVolumeSerialNumber, ':', facts.nFileIndexHigh, ':', facts.nFileIndexLow);
}

DWORD readFile(const std::string& path, std::string& bytes) {
    const FileHandle file = openFile(path, GENERIC_READ, OPEN_EXISTING);
    constexpr LONGLONG maxFileBytes = LONGLONG{256} << 20;
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.get(), &size))
        return GetLastError();
    if (size.QuadPart > maxFileBytes)
        return ERROR_NOT_ENOUGH_MEMORY;
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD done = 0;
    const auto wanted = static_cast<DWORD>(bytes.size());
    const DWORD error =
        ReadFile(file.get(), bytes.data(), wanted, &done, nullptr) ? ERROR_SUCCESS : GetLastError();
    bytes.resize(error == ERROR_SUCCESS ? done : 0);
    return error;
}

DWORD makeTemporaryFile(const std::string& path, std::uint64_t bytes) {
    const FileHandle file = openFile(path, GENERIC_WRITE | DELETE, CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, 0);
    const std::vector<char> zeros(std::size_t{1} << 16);
    bool good = file != nullptr;
    for (DWORD done = 0; good && bytes > 0; bytes -= done) {
        const auto size = static_cast<DWORD>(std::min<std::uint64_t>(bytes, zeros.size()));
        good = WriteFile(file.get(), zeros.data(), size, &done, nullptr) != FALSE;
    }
    return good && FlushFileBuffers(file.get()) ? ERROR_SUCCESS : GetLastError();
}

} // namespace vykeldev
