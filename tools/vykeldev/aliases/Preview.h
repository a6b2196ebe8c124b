#ifndef VYKELDEV_ALIASES_PREVIEW_H
#define VYKELDEV_ALIASES_PREVIEW_H

#include "DeviceTable.h"
#include "ini/IniDocument.h"
#include "TraditionalAliasTransferManager.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vykeldev::aliases {

/// What the next refresh does with a legacy entry.
enum class Outcome {
    Moves,     ///< A device receives the alias; the entry leaves the file.
    Dropped,   ///< The device has an alias already; the entry leaves the file.
    NoDevice,  ///< No device that takes an alias is meant.
    NotLocal,  ///< It is about a device of another machine.
    Unreached, ///< Nobody looks at it; `detail` says why.
    Malformed, ///< It makes the whole transfer fail; `detail` says why.
    Blocked    ///< It could be looked at if no entry were malformed.
};

/// One entry of the legacy file.
struct LegacyEntry {
    std::optional<std::string> alias;
    std::optional<std::string> target; ///< A resource name, or a persistent token.
    std::int32_t line = 0;             ///< Where it stands; of a malformed one, where to mend it.
    Outcome outcome = Outcome::NoDevice;
    std::uint32_t device = vykel::noDeviceNumber; ///< Of Moves and Dropped.
    std::string detail;
    bool stays = true; ///< In the file.
};

/// What the next refresh does with a whole file.
struct Preview {
    vykel::AliasLayout layout = vykel::AliasLayout::ByResourceName;
    bool fails = false;               ///< It can do nothing: entries are malformed.
    std::vector<LegacyEntry> entries; ///< In the order of their lines.
};

/// Runs the transfer on `copy`, whose content is then of no more use, and tells by `untouched`, an equal
/// document, what became of each entry. The devices should swallow what they are given. A device that will
/// refuse its alias cannot be foreseen. Throws what a plug-in threw, std::bad_alloc or vyerr::Exception.
Preview previewTransfer(vyini::IniDocument& untouched, vyini::IniDocument& copy,
                        const vykel::DeviceTable& devices);

} // namespace vykeldev::aliases

#endif
