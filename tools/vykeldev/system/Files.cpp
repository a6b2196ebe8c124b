#include "system/Files.h"

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
