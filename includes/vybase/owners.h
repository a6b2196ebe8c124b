#ifndef VYBASE_OWNERS_H
#define VYBASE_OWNERS_H

#include <cstdio>
#include <memory>
#include <type_traits>
#include <windows.h>

/// Owners of what the C runtime and the system hand out.
namespace vybase {

/// Closes a stream.
struct CloseStream {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
/// An open file stream; closed at the end of its life, which also ends every lock on it.
using FileStream = std::unique_ptr<std::FILE, CloseStream>;

/// Closes a handle of the system.
struct CloseSystemHandle {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
/// A handle that CloseHandle closes. Null means none: never store INVALID_HANDLE_VALUE here.
using Handle = std::unique_ptr<void, CloseSystemHandle>;

/// Closes a registry key.
struct CloseRegistryKey {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
/// An open registry key, or null.
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseRegistryKey>;

/// Unloads a library.
struct FreeModule {
    void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
};
/// A loaded library, or null.
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

/// Frees memory with LocalFree.
struct FreeLocal {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};
/// Memory that the system allocated and LocalFree frees.
template <class T>
using LocalMemory = std::unique_ptr<T, FreeLocal>;

} // namespace vybase

#endif
