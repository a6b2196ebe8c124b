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

/// The texts of the devices file and the numbers file; README.md shows them. Nothing here opens a file.
namespace simulated {

/// What is wrong with a text, and in which of its lines (from 1).
class TextError : public std::runtime_error {
public:
    TextError(std::size_t lineNumber, const std::string& reason)
        : std::runtime_error(reason), line(lineNumber) {}
    const std::size_t line;
};

/// A line of either file. All texts are UTF-8.
struct DeviceEntry {
    std::string token;  ///< Unique in the file; the persistent token in format 1.
    std::string token2; ///< The persistent token in format 2; the same as `token` unless given.
    std::int32_t version = 1;
    std::uint32_t sortKey = 0;
    std::uint32_t number = vykel::noDeviceNumber;
    std::optional<std::string> alias; ///< None: the device takes no alias. Empty text: it has none yet.
};

/// What the lines of a numbers file say.
struct Changes {
    std::vector<DeviceEntry> entries; ///< A token each, and a number, an alias or both.
    std::optional<TextError> error;   ///< The first bad line; such lines are left out.
};

/// Whether `text` is in UTF-16 or UTF-32: such a text begins with another byte-order mark than UTF-8, or has
/// a zero byte in its first character.
bool isWide(std::string_view text) noexcept;

/// The devices of a devices file, in its order. Throws TextError for the first bad line, std::bad_alloc.
std::vector<DeviceEntry> parseDevices(std::string_view text);

/// The lines of a numbers file, in its order. Throws std::bad_alloc.
Changes parseChanges(std::string_view text);

/// A line of a numbers file, without a line end: the token, the number and the alias of `change`, where it
/// has them. The token comes last and in quotes, so that a line that was cut off cannot be parsed. Throws
/// std::bad_alloc.
std::string formatChange(const DeviceEntry& change);

} // namespace simulated

#endif
