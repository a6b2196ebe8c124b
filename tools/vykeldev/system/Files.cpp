#include "system/Files.h"

#include "system/Text.h"
#include <algorithm>
#include <vector>

namespace vykeldev {
namespace {

constexpr LONGLONG maxFileBytes = LONGLONG{256} << 20;

} // namespace

FileHandle openFile(const std::string& path, DWORD access, DWORD disposition) {
    const HANDLE file =
        CreateFileW(toWide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return FileHandle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

DWORD readFile(const std::string& path, std::string& bytes) {
    const FileHandle file = openFile(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size = {};
    if (!file || !GetFileSizeEx(file.get(), &size))
        return GetLastError();
    if (size.QuadPart > maxFileBytes)
        return ERROR_NOT_ENOUGH_MEMORY;
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD done = 0;
    const bool isRead =
        ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) != FALSE;
    const DWORD error = isRead ? ERROR_SUCCESS : GetLastError();
    bytes.resize(isRead ? done : 0);
    return error;
}

bool writeZeros(HANDLE file, std::uint64_t count) {
    const std::vector<char> zeros(std::size_t{1} << 16);
    while (count > 0) {
        const auto size = static_cast<DWORD>(std::min<std::uint64_t>(count, zeros.size()));
        DWORD done = 0;
        if (!WriteFile(file, zeros.data(), size, &done, nullptr))
            return false;
        count -= size;
    }
    return FlushFileBuffers(file) != FALSE;
}

} // namespace vykeldev
