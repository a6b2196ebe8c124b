#ifndef SIMULATED_FILE_H
#define SIMULATED_FILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <windows.h>

namespace simulated {

/// A Windows path; WCHAR is the unit of Windows' wide-character functions.
using Path = std::basic_string<WCHAR>;

/// `path` followed by an ASCII `suffix`.
inline Path operator+(Path path, const char* suffix) {
    for (; *suffix != '\0'; ++suffix)
        path += static_cast<WCHAR>(*suffix);
    return path;
}

/// An open file, closed at the end of its scope. Other processes may read, write and replace it meanwhile.
class File {
public:
    File() noexcept = default;
    /// Opens as CreateFileW does; the file is `false` when that failed, and GetLastError says why.
    File(const Path& path, DWORD access, DWORD disposition) noexcept
        : handle_(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    File(File&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    File& operator=(File&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~File() {
        if (*this)
            CloseHandle(handle_);
    }

    explicit operator bool() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE handle() const noexcept { return handle_; }

    /// Size in bytes, or nothing when it cannot be told.
    std::optional<std::uint64_t> size() const noexcept {
        LARGE_INTEGER size = {};
        if (!GetFileSizeEx(handle_, &size))
            return std::nullopt;
        return static_cast<std::uint64_t>(size.QuadPart);
    }

    /// Reads up to `length` bytes from `offset`; the number read.
    std::uint32_t read(std::uint64_t offset, char* buffer, std::uint32_t length) const noexcept {
        DWORD done = 0;
        return seek(offset) && ReadFile(handle_, buffer, length, &done, nullptr) ? done : 0;
    }

    /// Writes all of `text` at `offset`; false when it could not.
    bool write(std::uint64_t offset, std::string_view text) const noexcept {
        DWORD done = 0;
        return seek(offset) &&
               WriteFile(handle_, text.data(), static_cast<DWORD>(text.size()), &done, nullptr) != 0 &&
               done == text.size();
    }

    /// Cuts the file off at `size` bytes.
    bool truncate(std::uint64_t size) const noexcept { return seek(size) && SetEndOfFile(handle_) != 0; }

private:
    bool seek(std::uint64_t offset) const noexcept {
        LARGE_INTEGER position = {};
        position.QuadPart = static_cast<LONGLONG>(offset);
        return SetFilePointerEx(handle_, position, nullptr, FILE_BEGIN) != 0;
    }

    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// Holds an exclusive lock on a whole file, across processes and across handles of one process.
class FileLock {
public:
    /// Waits without limit for the lock.
    explicit FileLock(const File& file) noexcept : handle_(file.handle()) {
        held_ = LockFileEx(handle_, LOCKFILE_EXCLUSIVE_LOCK, 0, wholeFile, wholeFile, &region_) != 0;
    }
    FileLock(FileLock&& other) noexcept : handle_(other.handle_), held_(std::exchange(other.held_, false)) {}
    FileLock& operator=(FileLock&&) = delete;
    ~FileLock() {
        if (held_)
            UnlockFileEx(handle_, 0, wholeFile, wholeFile, &region_);
    }

    bool held() const noexcept { return held_; }

private:
    static constexpr DWORD wholeFile = 0xFFFFFFFF; // both halves of the length
    HANDLE handle_;
    OVERLAPPED region_ = {}; // from offset 0
    bool held_ = false;
};

} // namespace simulated

#endif
