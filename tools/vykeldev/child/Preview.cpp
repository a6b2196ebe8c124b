#include "child/Preview.h"

#include "ini/IniEdit.h"
#include "machine/Findings.h"
#include "TraditionalAliasTransferManager.h"
#include <map>
#include <new>
#include <set>

namespace vykeldev {
namespace {

/// Replaces the alias of each record by the record's line, because several may have one alias.
void tagRecords(vyini::IniDocument& document) {
    for (std::size_t i = 0; const auto* const section = vykel::findAliasSection(&document, i); ++i)
        if (vyini::setIniValue(&document, section->name, "Alias", std::to_string(section->line).c_str(),
                               '"') < 0)
            throw std::bad_alloc();
}

/// Keys may be equal where values were split; then the first of them is removed, whichever was handed over.
void findWhatIsLeft(const LegacyFile& file, std::vector<EntryPreview>& entries) {
    std::set<std::int32_t> lines;
    for (const LegacyEntry& entry : file.entries())
        lines.insert(entry.line);
    for (EntryPreview& entry : entries)
        entry.stays = lines.count(entry.line) != 0;
}

} // namespace

Preview previewTransfer(const LegacyFile& file, const PreviewDevices& devices) {
    Preview preview;
    for (LegacyEntry& entry : file.entries()) {
        preview.fails = preview.fails || entry.flaw == &finding::legacyMalformed;
        preview.entries.push_back({std::move(entry)});
    }
    if (preview.fails)
        return preview; // a transfer reads all entries before it asks a device
    const bool byName = file.layout() == vykel::AliasLayout::ByResourceName;
    std::map<std::string, EntryPreview*> entryOf; // by resource name or tag
    for (EntryPreview& entry : preview.entries)
        if (!byName || entry.flaw == nullptr)
            entryOf[byName ? *entry.target : std::to_string(entry.line)] = &entry;
    if (!byName)
        tagRecords(file.document());
    vykel::TraditionalAliasTransferManager::transfer(&file.document(), devices.table);
    for (const PreviewDevice& device : devices.all) {
        if (!device.offered)
            continue;
        EntryPreview& entry = *entryOf.at(byName ? vykel::resourceName(device.number) : *device.offered);
        entry.device = device.number;
        entry.moves = !device.named;
        entry.stays = false;
        entry.detail.clear();
    }
    if (byName)
        findWhatIsLeft(file, preview.entries);
    return preview;
}

} // namespace vykeldev
