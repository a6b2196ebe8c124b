#include "DevicesFile.h"

#include "PluginError.h"
#include <optional>
#include <utility>

namespace simulated {

DevicesFile::DevicesFile(Path file) : path(std::move(file)) {}

std::vector<DeviceEntry> DevicesFile::read() {
    // The stamp is taken before the reading: an edit between the two only makes the list stale once more.
    const FileStamp now = stampOf(path);
    const std::optional<std::string> text = File(path, GENERIC_READ, OPEN_EXISTING).readAll();
    if (!text)
        throw PluginError(Code::FileMissing, path, 0, "the file cannot be read, or is larger than 16 MiB");
    if (isWide(*text)) // what `echo token=a > file` writes in PowerShell 5
        throw PluginError(Code::FileNotUtf8, path, 0, "the file is in UTF-16 or UTF-32; save it as UTF-8");
    try {
        std::vector<DeviceEntry> devices = parseDevices(*text);
        seen = now;
        return devices;
    } catch (const TextError& error) {
        throw PluginError(Code::FileMalformed, path, error.line, error.what());
    }
}

bool DevicesFile::isChanged() const noexcept {
    return !(stampOf(path) == seen);
}

} // namespace simulated
