#ifndef SIMULATED_DEVICESFILE_H
#define SIMULATED_DEVICESFILE_H

#include "DeviceText.h"
#include "File.h"
#include <vector>

namespace simulated {

/// The devices file beside the library, which is only read. Used by one thread at a time.
class DevicesFile {
public:
    /// Opens nothing yet.
    explicit DevicesFile(Path file);

    /// The devices, in the order of the file. Throws PluginError, std::bad_alloc.
    std::vector<DeviceEntry> read();

    /// Whether the file differs from the one that was read last. Looks only at its attributes.
    bool isChanged() const noexcept;

private:
    const Path path;
    FileStamp seen;
};

} // namespace simulated

#endif
