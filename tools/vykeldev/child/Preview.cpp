#include "child/Preview.h"

#include "errors/Exception.h"
#include "ini/IniEdit.h"
#include "TraditionalAliasTransferManager.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <map>
#include <new>
#include <set>

namespace vykeldev {
namespace {

using vykel::AliasLayout;

/// What becomes of an entry that no device is offered.
EntryFate fateOf(Flaw flaw) noexcept {
    return flaw == Flaw::None        ? EntryFate::NoDevice
           : flaw == Flaw::Malformed ? EntryFate::Malformed
           : flaw == Flaw::NotLocal  ? EntryFate::NotLocal
                                     : EntryFate::Unreached;
}

class Previewer {
public:
    explicit Previewer(const LegacyFile& file) : document(file.document()) {
        preview.layout = vykel::aliasLayoutOf(&document);
        for (const LegacyEntry& entry : file.entries())
            preview.entries.push_back({entry, fateOf(entry.flaw)});
    }

    Preview run(const vykel::DeviceTable& table, const std::deque<PreviewDevice>& devices) {
        for (std::size_t i = 0; i < preview.entries.size(); ++i)
            tagEntry(i);
        transfer(table);
        for (const PreviewDevice& device : devices)
            if (device.offered)
                noteConsumed(device);
        if (byName())
            findWhatIsLeft();
        return std::move(preview);
    }

private:
    bool byName() const noexcept { return preview.layout == AliasLayout::ByResourceName; }

    /// Replaces each alias by its index in the layout by token, where several entries may have one alias; in
    /// the other one the device's name tells which entry it was offered.
    void tagEntry(std::size_t index) {
        const EntryPreview& entry = preview.entries[index];
        if (byName() && entry.flaw == Flaw::None)
            entryOf[*entry.target] = index;
        if (!entry.record || entry.flaw == Flaw::Malformed)
            return;
        const std::string tag = std::to_string(index);
        const std::string section = vykel::aliasSectionName(*entry.record);
        if (vyini::setIniValue(&document, section.c_str(), "Alias", tag.c_str(), '"') < 0)
            throw std::bad_alloc();
        entryOf[tag] = index;
    }

    void noteConsumed(const PreviewDevice& device) {
        const std::string tag = byName() ? vykel::resourceName(device.number) : *device.offered;
        EntryPreview& entry = preview.entries[entryOf.at(tag)];
        entry.fate = device.named ? EntryFate::Dropped : EntryFate::Moves;
        entry.device = device.number;
        entry.stays = false;
        entry.detail.clear();
    }

    void transfer(const vykel::DeviceTable& devices) {
        try {
            vykel::TraditionalAliasTransferManager::transfer(&document, devices);
        } catch (const vyerr::ExceptionBase& exception) {
            auto& entries = preview.entries;
            preview.fails = std::any_of(entries.begin(), entries.end(), [](const EntryPreview& entry) {
                return entry.fate == EntryFate::Malformed;
            });
            if (!preview.fails ||
                exception.status()->code != vykel::toInteger(vykel::StatusCode::ConfigurationFault))
                throw;
            for (EntryPreview& entry : entries)
                if (entry.fate == EntryFate::NoDevice)
                    entry.fate = EntryFate::Blocked;
        }
    }

    /// Keys may be equal where values were split; then the first of them is removed, whichever was consumed.
    void findWhatIsLeft() {
        std::set<std::int32_t> lines;
        const vyini::IniSection* const section = vyini::findIniSection(&document, vykel::aliasesSection);
        const vyini::IniEntry* entry = section != nullptr ? section->entries.first() : nullptr;
        for (; entry != nullptr; entry = entry->next)
            lines.insert(entry->line);
        for (EntryPreview& each : preview.entries)
            each.stays = each.flaw == Flaw::OtherLayout || lines.count(each.line) != 0;
    }

    vyini::IniDocument& document;
    Preview preview;
    std::map<std::string, std::size_t> entryOf; // by tag
};

} // namespace

Preview previewTransfer(const LegacyFile& file, const vykel::DeviceTable& table,
                        const std::deque<PreviewDevice>& devices) {
    return Previewer(file).run(table, devices);
}

} // namespace vykeldev
