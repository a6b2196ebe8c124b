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

/// The text form of the simulated devices; README.md shows it. Nothing here touches a file.
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
    std::string token;  ///< Names the device within the file; its persistent token in format 1.
    std::string token2; ///< The persistent token in format 2; the same as `token` unless given.
    std::int32_t version = 1;
    std::uint32_t sortKey = 0;
    std::uint32_t number = vykel::noDeviceNumber;
    std::optional<std::string> alias; ///< None: the device takes no alias. Empty: it has none yet.
    std::size_t line = 0;             ///< Where it stands, from 1.
};

/// A number or an alias given to a device after its file was written.
struct DeviceChange {
    std::string token;
    std::optional<std::uint32_t> number;
    std::optional<std::string> alias;
};

/// The devices of a whole file, in its order. Throws TextError at the first bad line, std::bad_alloc.
std::vector<DeviceEntry> parseDevices(std::string_view text);

/// `text`, with the numbers and aliases of `devices` in the lines that parseDevices found them in. All else,
/// comments, blanks and line ends, stays as it was. Throws std::bad_alloc.
std::string rewriteDevices(std::string_view text, const std::vector<DeviceEntry>& devices);

/// One line for one change, without a line end. The token comes last and is quoted, so that a line which was
/// cut off anywhere does not parse. Throws std::bad_alloc.
std::string formatChange(const DeviceChange& change);

/// The change in a line of formatChange, or nothing when the line is damaged. Throws std::bad_alloc.
std::optional<DeviceChange> parseChange(std::string_view line);

} // namespace simulated

#endif
