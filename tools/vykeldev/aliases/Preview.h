#ifndef VYKELDEV_ALIASES_PREVIEW_H
#define VYKELDEV_ALIASES_PREVIEW_H

#include "aliases/LegacyFile.h"
#include "DeviceTable.h"
#include <cstdint>
#include <vector>

namespace vykeldev::aliases {

/// What the next refresh does with a legacy entry.
enum class Outcome {
    Moves,     ///< A device receives the alias; the entry leaves the file.
    Dropped,   ///< The device has an alias already; the entry leaves the file.
    NoDevice,  ///< No device that takes an alias is meant.
    NotLocal,  ///< It is about a device of another machine.
    Unreached, ///< Nobody looks at it; its flaw says why.
    Malformed, ///< It makes the whole transfer fail.
    Blocked    ///< It could be looked at if no entry were malformed.
};

/// What becomes of one entry.
struct EntryPreview : LegacyEntry {
    Outcome outcome = Outcome::NoDevice;
    std::uint32_t device = vykel::noDeviceNumber; ///< Of Moves and Dropped.
    bool stays = true;                            ///< In the file.
};

/// What the next refresh does with a whole file.
struct Preview {
    vykel::AliasLayout layout = vykel::AliasLayout::ByResourceName;
    bool fails = false;                ///< It can do nothing: entries are malformed.
    std::vector<EntryPreview> entries; ///< In the order of their lines.
};

/// Runs the transfer on `copy`, whose content is then of no more use, and tells by `untouched`, a second
/// reading of the file, what became of each entry. The devices should swallow what they are given. A device
/// that will refuse its alias cannot be foreseen. Throws what a plug-in threw, std::bad_alloc or
/// vyerr::Exception.
Preview previewTransfer(const LegacyFile& untouched, const LegacyFile& copy,
                        const vykel::DeviceTable& devices);

} // namespace vykeldev::aliases

#endif
