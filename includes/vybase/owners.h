#ifndef VYBASE_OWNERS_H
#define VYBASE_OWNERS_H

#include <cstdio>
#include <memory>
#include <windows.h>

/// Owners of what the C runtime and the system hand out.
namespace vybase {

struct CloseStream {
    void operator()(std::FILE* stream) const noexcept { std::fclose(stream); }
};
/// An open file stream; closed at the end of its life, which also ends every lock on it.
using FileStream = std::unique_ptr<std::FILE, CloseStream>;

struct CloseSystemHandle {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
/// A handle that CloseHandle closes. Null when there is none: INVALID_HANDLE_VALUE must not get in here.
using Handle = std::unique_ptr<void, CloseSystemHandle>;

struct FreeLocal {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};
/// Memory that the system allocated and LocalFree frees.
template <class Type>
using LocalMemory = std::unique_ptr<Type, FreeLocal>;

} // namespace vybase

#endif
