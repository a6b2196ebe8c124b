#ifndef WINHOST_FAULTS_H
#define WINHOST_FAULTS_H

#include "winhost/errors.h"
#include <cstddef>

// Faults: a test can make fail every call of this stand-in that can fail on Windows. It arms a ScopedFault. A
// child process can get one from the environment, which is read when the program starts:
//     WINHOST_FAULT="<call or Any>:<n>:<fail|onward|kill>[:<error>]"     for example  fwrite:2:onward:112
// WINHOST_FAULT_LOG names a file; the name of each call that a fault strikes is appended to it, one per line.
// All libraries of a process share the armed faults. Calls are counted over all threads.
//
// A call that is made to fail does nothing, sets its error (stream calls: errno, too) and returns what
// Windows would return. The exceptions:
//   - fread, fwrite, ReadFile and WriteFile first transfer half of what was asked.
//   - fflush and fclose lose what is not written yet.
//   - MoveFileExW with MOVEFILE_WRITE_THROUGH also fails when FlushFileBuffers does.
//   - Calls that free something free it, then report the failure.
//   - LockFileEx with ERROR_IO_PENDING: GetOverlappedResult then gets the lock, or fails.
//   - InitializeCriticalSection throws StructuredException.
//   - malloc is any allocation, new and realloc among them, of a program that links winhost_memory.
// A fault never makes a call on a standard stream fail.

/// Every call that can be made to fail, and its natural error: the one it fails with when the fault names
/// none.
#define WINHOST_CALLS(CALL)                                                                                  \
    CALL(RegOpenKeyExW, ERROR_ACCESS_DENIED)                                                                 \
    CALL(RegQueryInfoKeyW, ERROR_KEY_DELETED)                                                                \
    CALL(RegEnumKeyExW, ERROR_KEY_DELETED)                                                                   \
    CALL(RegQueryValueExW, ERROR_KEY_DELETED)                                                                \
    CALL(RegCloseKey, ERROR_INVALID_HANDLE)                                                                  \
    CALL(RegCreateKeyExW, ERROR_ACCESS_DENIED)                                                               \
    CALL(RegSetKeyValueW, ERROR_NO_SYSTEM_RESOURCES)                                                         \
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
    CALL(CreateDirectoryW, ERROR_ACCESS_DENIED)                                                              \
    CALL(RemoveDirectoryW, ERROR_ACCESS_DENIED)                                                              \
    CALL(MoveFileExA, ERROR_ACCESS_DENIED)                                                                   \
    CALL(MoveFileExW, ERROR_ACCESS_DENIED)                                                                   \
    CALL(GetFileAttributesW, ERROR_ACCESS_DENIED)                                                            \
    CALL(GetFileAttributesExW, ERROR_ACCESS_DENIED)                                                          \
    CALL(GetFullPathNameW, ERROR_NOT_ENOUGH_MEMORY)                                                          \
    CALL(GetFileInformationByHandle, ERROR_IO_DEVICE)                                                        \
    CALL(GetFinalPathNameByHandleW, ERROR_PATH_NOT_FOUND)                                                    \
    CALL(ConvertStringSecurityDescriptorToSecurityDescriptorW, ERROR_NOT_ENOUGH_MEMORY)                      \
    CALL(SetKernelObjectSecurity, ERROR_ACCESS_DENIED)                                                       \
    CALL(GetSecurityInfo, ERROR_ACCESS_DENIED)                                                               \
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
    CALL(InitializeCriticalSection, STATUS_NO_MEMORY)                                                        \
    CALL(FormatMessageA, ERROR_NOT_ENOUGH_MEMORY)                                                            \
    CALL(FormatMessageW, ERROR_NOT_ENOUGH_MEMORY)                                                            \
    CALL(LocalFree, ERROR_INVALID_HANDLE)                                                                    \
    CALL(MultiByteToWideChar, ERROR_NOT_ENOUGH_MEMORY)                                                       \
    CALL(WideCharToMultiByte, ERROR_NOT_ENOUGH_MEMORY)                                                       \
    CALL(malloc, ERROR_NOT_ENOUGH_MEMORY)

namespace winhost {

/// The calls of the list above; Any matches each of them but malloc.
enum class Call : unsigned char {
#define WINHOST_ENUMERATOR(name, error) name,
    WINHOST_CALLS(WINHOST_ENUMERATOR)
#undef WINHOST_ENUMERATOR
        Any
};

/// What a fault does to the calls that it strikes.
enum class Effect : unsigned char {
    Fail,       ///< the n-th call fails
    FailOnward, ///< the n-th and every later call fail
    Kill        ///< the process is killed (SIGKILL) before the n-th call
};

/// Which calls a fault strikes, and how they fail.
struct Fault {
    Call call = Call::Any;
    std::size_t nth = 1; ///< counts the matching calls since arming, from 1
    Effect effect = Effect::Fail;
    DWORD error = 0; ///< 0: the natural error of the call
};

/// Arms a fault for its own lifetime. Several may be armed at the same time. Each counts for itself; when
/// more than one strikes a call, the one armed last gives the error. May be used by any thread.
class ScopedFault {
public:
    /// Arms a copy of the fault.
    explicit ScopedFault(const Fault& armed) noexcept;
    ~ScopedFault();
    ScopedFault(const ScopedFault&) = delete;
    ScopedFault& operator=(const ScopedFault&) = delete;

    /// How many calls the fault has made fail.
    std::size_t struck() const noexcept;

    /// How many calls it has counted. A fault whose `nth` is out of reach only counts.
    std::size_t counted() const noexcept;

private:
    friend DWORD armedFault(Call call) noexcept;
    const Fault fault;
    std::size_t calls = 0; ///< matching calls since arming
    std::size_t failures = 0;
    ScopedFault* next = nullptr;
};

/// The stand-in for a structured exception of Windows; InitializeCriticalSection and RaiseException throw it.
struct StructuredException {
    DWORD code; ///< an NTSTATUS, for example STATUS_NO_MEMORY
};

/// The number of files, streams, events, finds, keys, modules, messages and critical sections that are open
/// in this process. A test compares it before and after a run to see a leak.
std::ptrdiff_t openResources() noexcept;

} // namespace winhost

#endif
