#ifndef VYKELDEV_PLATFORM_PROCESS_H
#define VYKELDEV_PLATFORM_PROCESS_H

#include <cstdint>
#include <windows.h>

/// What differs between Windows and the host: ProcessWindows.cpp and ProcessHost.cpp.
namespace vykeldev::check {

/// What this process holds of the system.
struct Usage {
    std::uint64_t memory;  ///< Bytes that are its alone.
    std::uint64_t handles; ///< Open handles; 0 when they cannot be counted.
};

Usage usageOfThisProcess();

/// A crash of this process ends it at once: no dialog, no report, no dump.
void crashQuietly() noexcept;

/// Ends this process with exit code 0: nothing of it, nor of the plug-in, is called any more.
[[noreturn]] void endAtOnce() noexcept;

/// Unloads a library. A crash in that ends this process, also where the system would hide it.
void unload(HMODULE library) noexcept;

} // namespace vykeldev::check

#endif
