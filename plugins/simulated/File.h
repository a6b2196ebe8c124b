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

/// What tells one state of a file from another.
struct FileStamp {
    std::uint64_t size = 0;
    std::uint64_t written = 0; ///< when, in the system's unit

    friend bool operator==(const FileStamp& left, const FileStamp& right) noexcept {
        return left.size == right.size && left.written == right.written;
    }
};

/// The state of a file, by its attributes alone; zeros when the system does not give them.
inline FileStamp stampOf(const Path& path) noexcept {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data))
        return {};
    const auto join = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {join(data.nFileSizeHigh, data.nFileSizeLow),
            join(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

/// An open file, closed at the end of its scope.
class File {
public:
    /// No larger file is read.
    static constexpr std::uint64_t longest = 16 << 20;

    File() noexcept = default;
    /// Opens as CreateFileW does. When that fails, the object converts to false and GetLastError says why.
    File(const Path& path, DWORD access, DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL,
         DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE) noexcept
        : opened(CreateFileW(path.c_str(), access, share, nullptr, disposition, flags, nullptr)) {}
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

    /// All of a file that was just opened; nothing when it cannot be read to its end or is larger than
    /// `longest`: a part would be taken for the whole. Throws std::bad_alloc.
    std::optional<std::string> readAll() const {
        const auto length = size();
        if (!length || *length > longest)
            return std::nullopt;
        std::string text(static_cast<std::size_t>(*length), '\0');
        DWORD done = 0;
        if (!ReadFile(opened, text.data(), static_cast<DWORD>(text.size()), &done, nullptr) ||
            done != text.size())
            return std::nullopt;
        return text;
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
    /// Waits without limit for the lock. The file must stay open.
    explicit FileLock(File& lockFile) noexcept : file(lockFile) {
        locked = LockFileEx(file.handle(), LOCKFILE_EXCLUSIVE_LOCK, 0, wholeFile, wholeFile, &region) != 0;
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() {
        if (locked && !UnlockFileEx(file.handle(), 0, wholeFile, wholeFile, &region))
            file = File(); // frees the lock, too
    }

    /// False when the system refused the lock.
    bool held() const noexcept { return locked; }

private:
    static constexpr DWORD wholeFile = 0xFFFFFFFF; ///< in both halves of the length
    File& file;
    OVERLAPPED region = {}; ///< begins at offset 0
    bool locked = false;
};

} // namespace simulated

#endif
