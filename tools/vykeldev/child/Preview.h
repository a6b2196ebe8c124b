#ifndef VYKELDEV_CHILD_PREVIEW_H
#define VYKELDEV_CHILD_PREVIEW_H

#include "child/PreviewDevices.h"
#include "machine/LegacyFile.h"
#include <cstdint>
#include <vector>

namespace vykeldev {

/// What becomes of one entry.
struct EntryPreview : LegacyEntry {
    std::uint32_t device = vykel::noDeviceNumber; ///< The device that it is used for; or none.
    bool moves = false; ///< That device receives the alias; otherwise it keeps one that it has already.
    bool stays = true;  ///< In the file.
};

/// What the next refresh does with a whole file.
struct Preview {
    bool fails = false;                ///< The transfer fails because entries are malformed.
    std::vector<EntryPreview> entries; ///< In the order of their lines.
};

/// Runs the transfer on the file's document, whose content is of no use afterwards, and reports what became
/// of each entry. The devices remember what they are offered. It cannot foresee that a device refuses its
/// alias. Throws what a plug-in threw, std::bad_alloc or vyerr::Exception.
Preview previewTransfer(const LegacyFile& file, const PreviewDevices& devices);

} // namespace vykeldev

#endif
