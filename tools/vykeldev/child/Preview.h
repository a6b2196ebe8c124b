#ifndef VYKELDEV_CHILD_PREVIEW_H
#define VYKELDEV_CHILD_PREVIEW_H

#include "child/PreviewDevices.h"
#include "machine/LegacyFile.h"
#include <cstdint>
#include <deque>
#include <vector>

namespace vykeldev {

/// What the next refresh does with a legacy entry.
enum class EntryFate {
    Moves,     ///< A device receives the alias; the entry leaves the file.
    Dropped,   ///< The device has an alias already; the entry leaves the file.
    NoDevice,  ///< It names no present device that takes aliases.
    NotLocal,  ///< It is about a device of another machine.
    Unreached, ///< A transfer does not use it; its flaw says why.
    Malformed, ///< It makes the whole transfer fail.
    Blocked    ///< It would be tried if no entry were malformed.
};

/// What becomes of one entry.
struct EntryPreview : LegacyEntry {
    EntryFate fate = EntryFate::NoDevice;
    std::uint32_t device = vykel::noDeviceNumber; ///< Of Moves and Dropped.
    bool stays = true;                            ///< In the file.
};

/// What the next refresh does with a whole file.
struct Preview {
    vykel::AliasLayout layout = vykel::AliasLayout::ByResourceName;
    bool fails = false;                ///< The transfer fails because entries are malformed.
    std::vector<EntryPreview> entries; ///< In the order of their lines.
};

/// Runs the transfer on the file's document, whose content is of no use afterwards, and reports what became
/// of each entry. `table` lists `devices`, which remember what they are offered. It cannot foresee that a
/// device refuses its alias. Throws what a plug-in threw, std::bad_alloc or vyerr::Exception.
Preview previewTransfer(const LegacyFile& file, const vykel::DeviceTable& table,
                        const std::deque<PreviewDevice>& devices);

} // namespace vykeldev

#endif
