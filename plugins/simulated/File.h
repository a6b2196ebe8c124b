#ifndef SIMULATED_FILE_H
#define SIMULATED_FILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <windows.h>

namespace simulated {

/// A Windows path. WCHAR is the unit of Windows' wide-character functions.
using Path = std::basic_string<WCHAR>;

/// `path` followed by an ASCII `suffix`.
inline Path operator+(Path path, const char* suffix) {
    for (; *suffix != '\0'; ++suffix)
        path += static_cast<WCHAR>(*suffix);
    return path;
}

/// An open file, closed at the end of its scope. Other processes may read, write and replace it at the same
/// time.
class File {
public:
    File() noexcept = default;
    /// Opens as CreateFileW does. When that fails, the object converts to false and GetLastError says why.
    File(const Path& path, DWORD access, DWORD disposition) noexcept
        : opened(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    File(File&& other) noexcept : opened(std::exchange(other.opened, INVALID_HANDLE_VALUE)) {}
    File& operator=(File&& other) noexcept {
        std::swap(opened, other.opened);
        return *this;
    }
    ~File() {
        if (*this)
            CloseHandle(opened);
    }

    /// Whether a file is open.
    explicit operator bool() const noexcept { return opened != INVALID_HANDLE_VALUE; }
    /// The handle; it stays owned here.
    HANDLE handle() const noexcept { return opened; }

    /// The size in bytes; nothing when the system cannot say.
    std::optional<std::uint64_t> size() const noexcept {
        LARGE_INTEGER size = {};
        if (!GetFileSizeEx(opened, &size))
            return std::nullopt;
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    /// Reads up to `length` bytes at `offset`. Returns the number of bytes read, 0 after a failure.
    std::uint32_t read(std::uint64_t offset, char* buffer, std::uint32_t length) const noexcept {
        DWORD done = 0;
        return seek(offset) && ReadFile(opened, buffer, length, &done, nullptr) ? done : 0;
    }

    /// Writes all of `text` at `offset`. False when that failed.
    bool write(std::uint64_t offset, std::string_view text) const noexcept {
        DWORD done = 0;
        return seek(offset) &&
               WriteFile(opened, text.data(), static_cast<DWORD>(text.size()), &done, nullptr) != 0 &&
               done == text.size();
    }

    /// Cuts the file to `size` bytes. False when that failed.
    bool truncate(std::uint64_t size) const noexcept { return seek(size) && SetEndOfFile(opened) != 0; }

private:
    bool seek(std::uint64_t offset) const noexcept {
        LARGE_INTEGER position = {};
        position.QuadPart = static_cast<LONGLONG>(offset);
        return SetFilePointerEx(opened, position, nullptr, FILE_BEGIN) != 0;
    }

    HANDLE opened = INVALID_HANDLE_VALUE;
};

/// Holds an exclusive lock on a whole file, across processes and across handles of one process.
class FileLock {
public:
    /// Waits without limit for the lock.
    explicit FileLock(const File& lockFile) noexcept : file(lockFile.handle()) {
        locked = LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, 0, wholeFile, wholeFile, &region) != 0;
    }
    FileLock(FileLock&& other) noexcept : file(other.file), locked(std::exchange(other.locked, false)) {}
    FileLock& operator=(FileLock&&) = delete;
    ~FileLock() {
        if (locked)
            UnlockFileEx(file, 0, wholeFile, wholeFile, &region);
    }

    /// False when the system refused the lock.
    bool held() const noexcept { return locked; }

private:
    static constexpr DWORD wholeFile = 0xFFFFFFFF; ///< in both halves of the length
    const HANDLE file;
    OVERLAPPED region = {}; ///< begins at offset 0
    bool locked = false;
};

} // namespace simulated

#endif
