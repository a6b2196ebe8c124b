#ifndef WINHOST_FAULTS_H
#define WINHOST_FAULTS_H

#include "winhost/errors.h"
#include <cstddef>

// Faults: every call of this stand-in that can fail on Windows begins with one look at the armed faults. A
// test arms a ScopedFault; a child process is given one by the environment, read when the program starts:
//     WINHOST_FAULT="<call or Any>:<n>:<fail|onward|kill>[:<error>]"     for example  fwrite:2:onward:112
// All libraries of a process share the armed faults; calls are counted over all threads.
//
// What failing means: the call does nothing, sets its error (streams: errno too) and answers as Windows
// would, but
//   fread, fwrite and WriteFile  first transfer half of what was asked; the stream's error flag is set;
//   calls that free something    free it and then report the failure;
//   LockFileEx                   with ERROR_IO_PENDING: the lock is granted, or fails, by
//   GetOverlappedResult; InitializeCriticalSection    throws StructuredException.
// Standard streams are never struck.

/// Every call that a fault can strike, and the error it then fails with when none is given.
#define WINHOST_CALLS(CALL)                                                                                  \
    CALL(RegOpenKeyExW, ERROR_ACCESS_DENIED)                                                                 \
    CALL(RegQueryInfoKeyW, ERROR_KEY_DELETED)                                                                \
    CALL(RegEnumKeyExW, ERROR_KEY_DELETED)                                                                   \
    CALL(RegQueryValueExW, ERROR_KEY_DELETED)                                                                \
    CALL(RegCloseKey, ERROR_INVALID_HANDLE)                                                                  \
    CALL(RegCreateKeyExW, ERROR_ACCESS_DENIED)                                                               \
    CALL(RegSetValueExW, ERROR_NO_SYSTEM_RESOURCES)                                                          \
    CALL(RegDeleteTreeW, ERROR_ACCESS_DENIED)                                                                \
    CALL(SHGetFolderPathW, ERROR_FILE_NOT_FOUND)                                                             \
    CALL(fopen, ERROR_ACCESS_DENIED)                                                                         \
    CALL(fread, ERROR_IO_DEVICE)                                                                             \
    CALL(fwrite, ERROR_DISK_FULL)                                                                            \
    CALL(fseek, ERROR_SEEK)                                                                                  \
    CALL(fflush, ERROR_DISK_FULL)                                                                            \
    CALL(fclose, ERROR_DISK_FULL)                                                                            \
    CALL(remove, ERROR_ACCESS_DENIED)                                                                        \
    CALL(_fileno, ERROR_INVALID_HANDLE)                                                                      \
    CALL(_get_osfhandle, ERROR_INVALID_HANDLE)                                                               \
    CALL(CreateFileA, ERROR_ACCESS_DENIED)                                                                   \
    CALL(CreateFileW, ERROR_ACCESS_DENIED)                                                                   \
    CALL(ReadFile, ERROR_IO_DEVICE)                                                                          \
    CALL(WriteFile, ERROR_DISK_FULL)                                                                         \
    CALL(SetFilePointerEx, ERROR_SEEK)                                                                       \
    CALL(SetEndOfFile, ERROR_DISK_FULL)                                                                      \
    CALL(GetFileSizeEx, ERROR_IO_DEVICE)                                                                     \
    CALL(FlushFileBuffers, ERROR_IO_DEVICE)                                                                  \
    CALL(CloseHandle, ERROR_INVALID_HANDLE)                                                                  \
    CALL(DeleteFileW, ERROR_ACCESS_DENIED)                                                                   \
    CALL(MoveFileExA, ERROR_ACCESS_DENIED)                                                                   \
    CALL(MoveFileExW, ERROR_ACCESS_DENIED)                                                                   \
    CALL(GetFileAttributesW, ERROR_ACCESS_DENIED)                                                            \
    CALL(GetFileAttributesExW, ERROR_ACCESS_DENIED)                                                          \
    CALL(GetFullPathNameW, ERROR_NOT_ENOUGH_MEMORY)                                                          \
    CALL(FindFirstFileA, ERROR_ACCESS_DENIED)                                                                \
    CALL(FindClose, ERROR_INVALID_HANDLE)                                                                    \
    CALL(LockFileEx, ERROR_NOT_SUPPORTED)                                                                    \
    CALL(UnlockFileEx, ERROR_NOT_LOCKED)                                                                     \
    CALL(GetOverlappedResult, ERROR_IO_DEVICE)                                                               \
    CALL(CreateEventA, ERROR_NOT_ENOUGH_MEMORY)                                                              \
    CALL(LoadLibraryExW, ERROR_MOD_NOT_FOUND)                                                                \
    CALL(GetProcAddress, ERROR_PROC_NOT_FOUND)                                                               \
    CALL(FreeLibrary, ERROR_INVALID_HANDLE)                                                                  \
    CALL(GetModuleHandleExW, ERROR_MOD_NOT_FOUND)                                                            \
    CALL(GetModuleFileNameW, ERROR_NOT_ENOUGH_MEMORY)                                                        \
    CALL(DisableThreadLibraryCalls, ERROR_INVALID_HANDLE)                                                    \
    CALL(InitializeCriticalSection, STATUS_NO_MEMORY)                                                        \
    CALL(FormatMessageA, ERROR_NOT_ENOUGH_MEMORY)                                                            \
    CALL(LocalFree, ERROR_INVALID_HANDLE)                                                                    \
    CALL(MultiByteToWideChar, ERROR_NOT_ENOUGH_MEMORY)                                                       \
    CALL(WideCharToMultiByte, ERROR_NOT_ENOUGH_MEMORY)

namespace winhost {

/// The calls of the list above, by name; Any matches each of them.
enum class Call : unsigned char {
#define WINHOST_ENUMERATOR(name, error) name,
    WINHOST_CALLS(WINHOST_ENUMERATOR)
#undef WINHOST_ENUMERATOR
        Any
};

enum class Effect : unsigned char {
    Fail,       ///< the n-th call fails
    FailOnward, ///< the n-th and every later call fail
    Kill        ///< the process is killed (SIGKILL) before the n-th call
};

struct Fault {
    Call call = Call::Any;
    std::size_t nth =
        1; ///< counted over the matching calls since arming, from 1; 0 never strikes and only counts
    Effect effect = Effect::Fail;
    DWORD error = 0; ///< 0: the natural error of the call that is struck
};

/// Arms a fault for its own lifetime. Several may be armed at once: each counts for itself, and the one armed
/// last decides a call that more than one strikes. Any thread may make, ask and destroy one.
class ScopedFault {
public:
    explicit ScopedFault(const Fault& fault) noexcept;
    ~ScopedFault();
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;

    /// Matching calls since arming, struck ones included.
    std::size_t calls() const noexcept;
    /// How many calls the fault has made fail.
    std::size_t struck() const noexcept;

private:
    friend DWORD armedFault(Call call) noexcept;
    const Fault fault_;
    std::size_t calls_ = 0;
    std::size_t struck_ = 0;
    ScopedFault* next_ = nullptr;
};

/// What InitializeCriticalSection throws in place of a structured exception.
struct StructuredException {
    DWORD code; ///< an NTSTATUS, for example STATUS_NO_MEMORY
};

/// Files, streams, events, finds, keys, modules, messages and critical sections now open in this process: a
/// test that compares it before and after a run sees what leaked.
std::ptrdiff_t openResources() noexcept;

} // namespace winhost

#endif
