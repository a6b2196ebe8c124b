#ifndef SIMULATED_DEVICETEXT_H
#define SIMULATED_DEVICETEXT_H

#include "vykel/IDevice.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

/// The text form of the simulated devices; README.md shows it. Nothing here opens a file.
namespace simulated {

/// What is wrong with a text, and in which of its lines (from 1).
class TextError : public std::runtime_error {
public:
    TextError(std::size_t lineNumber, const std::string& reason)
        : std::runtime_error(reason), line(lineNumber) {}
    const std::size_t line;
};

/// One device of a `.devices` file. All texts are UTF-8.
struct DeviceEntry {
    std::string token;  ///< Unique in the file; the persistent token in format 1.
    std::string token2; ///< The persistent token in format 2; the same as `token` unless given.
    std::int32_t version = 1;
    std::uint32_t sortKey = 0;
    std::uint32_t number = vykel::noDeviceNumber;
    std::optional<std::string> alias; ///< None: the device takes no alias. Empty text: it has none yet.
    std::size_t line = 0;             ///< Its line in the file, from 1.
};

/// A number or an alias that a device was given after the file was written.
struct DeviceChange {
    std::string token;
    std::optional<std::uint32_t> number;
    std::optional<std::string> alias;
};

/// Whether `text` is in UTF-16 or UTF-32: such a text begins with another byte-order mark than UTF-8, or has
/// a zero byte in its first character.
bool isWide(std::string_view text) noexcept;

/// The devices of a file, in its order. Throws TextError for the first bad line, std::bad_alloc.
std::vector<DeviceEntry> parseDevices(std::string_view text);

/// `text`, with the numbers and aliases of `devices` in the lines where parseDevices found the devices.
/// Everything else (comments, blanks, line ends) stays unchanged. Throws std::bad_alloc.
std::string rewriteDevices(std::string_view text, const std::vector<DeviceEntry>& devices);

/// One line for one change, without a line end. The token comes last and in quotes, so that a line that was
/// cut off cannot be parsed. Throws std::bad_alloc.
std::string formatChange(const DeviceChange& change);

/// The change in a line that formatChange made; nothing when the line is damaged. Throws std::bad_alloc.
std::optional<DeviceChange> parseChange(std::string_view line);

} // namespace simulated

#endif
