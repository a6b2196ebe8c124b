#include "winhost/errors.h"

#include "faultCheck.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

using winhost::Call;

namespace {

thread_local DWORD lastError = 0;

struct ErrorText {
    DWORD error;
    const char* text;
};

constexpr ErrorText errorTexts[] = {
    {ERROR_SUCCESS, "The operation completed successfully."},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified."},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified."},
    {ERROR_TOO_MANY_OPEN_FILES, "The system cannot open the file."},
    {ERROR_ACCESS_DENIED, "Access is denied."},
    {ERROR_INVALID_HANDLE, "The handle is invalid."},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory resources are available to process this command."},
    {ERROR_OUTOFMEMORY, "Not enough memory resources are available to complete this operation."},
    {ERROR_NOT_SAME_DEVICE, "The system cannot move the file to a different disk drive."},
    {ERROR_WRITE_PROTECT, "The media is write protected."},
    {ERROR_SEEK, "The drive cannot locate a specific area or track on the disk."},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning."},
    {ERROR_SHARING_VIOLATION,
     "The process cannot access the file because it is being used by another process."},
    {ERROR_LOCK_VIOLATION,
     "The process cannot access the file because another process has locked a portion of the file."},
    {ERROR_NOT_SUPPORTED, "The request is not supported."},
    {ERROR_FILE_EXISTS, "The file exists."},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect."},
    {ERROR_DISK_FULL, "There is not enough space on the disk."},
    {ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small."},
    {ERROR_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect."},
    {ERROR_MOD_NOT_FOUND, "The specified module could not be found."},
    {ERROR_PROC_NOT_FOUND, "The specified procedure could not be found."},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty."},
    {ERROR_NOT_LOCKED, "The segment is already unlocked."},
    {ERROR_BAD_EXE_FORMAT, "%1 is not a valid Win32 application."},
    {ERROR_FILENAME_EXCED_RANGE, "The filename or extension is too long."},
    {ERROR_MORE_DATA, "More data is available."},
    {ERROR_NO_MORE_ITEMS, "No more data is available."},
    {ERROR_IO_PENDING, "Overlapped I/O operation is in progress."},
    {ERROR_BADDB, "The configuration registry database is corrupt."},
    {ERROR_KEY_DELETED, "Illegal operation attempted on a registry key that has been marked for deletion."},
    {ERROR_NO_UNICODE_TRANSLATION,
     "No mapping for the Unicode character exists in the target multi-byte code page."},
    {ERROR_IO_DEVICE, "The request could not be performed because of an I/O device error."},
    {ERROR_NO_SYSTEM_RESOURCES, "Insufficient system resources exist to complete the requested service."}};

/// `buffer` is the address of a pointer.
template <class Unit>
DWORD formatMessage(DWORD flags, DWORD error, Unit* buffer) noexcept {
    constexpr DWORD known =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    if (flags != known || buffer == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    for (const ErrorText& entry : errorTexts) {
        if (entry.error != error)
            continue;
        const std::size_t length = std::strlen(entry.text);
        auto* const message = static_cast<Unit*>(std::malloc((length + 3) * sizeof(Unit)));
        if (message == nullptr) {
            SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return 0;
        }
        constexpr std::string_view end("\r\n\0", 3);
        std::copy(end.begin(), end.end(), std::copy_n(entry.text, length, message));
        std::memcpy(buffer, &message, sizeof message);
        winhost::countResources(+1);
        return static_cast<DWORD>(length + 2);
    }
    SetLastError(ERROR_MR_MID_NOT_FOUND);
    return 0;
}

} // namespace

extern "C" {

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    lastError = error;
}

DWORD FormatMessageA(DWORD flags, LPCVOID, DWORD error, DWORD, LPSTR buffer, DWORD, void*) {
    return winhost::fails(Call::FormatMessageA) ? 0 : formatMessage(flags, error, buffer);
}

DWORD FormatMessageW(DWORD flags, LPCVOID, DWORD error, DWORD, LPWSTR buffer, DWORD, void*) {
    return winhost::fails(Call::FormatMessageW) ? 0 : formatMessage(flags, error, buffer);
}

HLOCAL LocalFree(HLOCAL memory) {
    if (memory != nullptr) {
        std::free(memory);
        winhost::countResources(-1);
    }
    // As on Windows, a failure returns the handle: a value to compare, not memory to use.
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
    return winhost::fails(Call::LocalFree) ? memory : nullptr;
}
}
