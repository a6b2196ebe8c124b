#ifndef VYKEL_STATUSCODES_H
#define VYKEL_STATUSCODES_H

#include <cstdint>

namespace vykel {

/// Every code that the library itself produces. 0 is success, a negative code an error, a positive code a
/// warning. A plug-in may return negative codes of its own; the library passes those on unchanged.
enum class StatusCode : std::int32_t {
    /// No error.
    Success = 0,
    /// A lock file can be neither opened nor created (is the configuration folder missing?), or the legacy
    /// alias file holds malformed entries or cannot be edited or saved.
    ConfigurationFault = -50209,
    /// Memory is exhausted.
    MemoryFull = -52000,
    /// The library is not initialised, or there was a failure that has no code of its own.
    GeneralFault = -52003,
    /// A cast failed; only a faulty plug-in causes this.
    BadCast = -52004,
    /// An argument is invalid (null pointer, index beyond the list), or a plug-in library or one of its
    /// symbols cannot be loaded.
    InvalidParameter = -52005,
    /// A registry key or value, or a standard folder, cannot be opened, listed or read.
    ResourceNotFound = -52006,
    /// An object of the operating system (event, file lock) cannot be created or used.
    OsFault = -52008,
    /// A plug-in was asked for a device list while it was not initialised.
    PluginNotInitialized = -52010,
    /// A device's version is below the minimum asked for, or the interface version is not supported.
    VersionMismatch = -63193
};

/// The number that crosses the binary interfaces.
constexpr std::int32_t toInteger(StatusCode code) noexcept {
    return static_cast<std::int32_t>(code);
}

} // namespace vykel

#endif
