#include "aliases/Preview.h"

#include "errors/Exception.h"
#include "ini/IniEdit.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <map>
#include <new>
#include <set>

namespace vykeldev::aliases {
namespace {

using vykel::AliasLayout;

Outcome outcomeOf(Flaw flaw) noexcept {
    switch (flaw) {
    case Flaw::None:
        return Outcome::NoDevice;
    case Flaw::Malformed:
        return Outcome::Malformed;
    case Flaw::NotLocal:
        return Outcome::NotLocal;
    default:
        return Outcome::Unreached;
    }
}

class Previewer final : public vykel::AliasTransferObserver {
public:
    Previewer(const LegacyFile& untouched, vyini::IniDocument& changed) : copy(changed) {
        preview.layout = untouched.layout();
        for (const LegacyEntry& entry : untouched.entries())
            preview.entries.push_back({entry, outcomeOf(entry.flaw)});
    }

    Preview run(const vykel::DeviceTable& devices) {
        for (std::size_t i = 0; i < preview.entries.size(); ++i)
            makeKnown(i);
        transfer(devices);
        if (byName())
            findWhatIsLeft();
        return std::move(preview);
    }

    void onConsumed(const std::string& alias, std::uint32_t deviceNumber, bool given) override {
        const std::string name = byName() ? "KEL" + std::to_string(deviceNumber) : alias;
        EntryPreview& entry = preview.entries[entryOf.at(name)];
        entry.outcome = given ? Outcome::Moves : Outcome::Dropped;
        entry.device = deviceNumber;
        entry.stays = false;
        entry.detail.clear();
    }

private:
    bool byName() const noexcept { return preview.layout == AliasLayout::ByResourceName; }

    /// Makes an entry known when it is consumed: by its resource name, which several may have only as
    /// duplicates; or else by a number in place of its alias, which several may have.
    void makeKnown(std::size_t index) {
        const EntryPreview& entry = preview.entries[index];
        if (byName() && entry.flaw == Flaw::None)
            entryOf[*entry.target] = index;
        if (!entry.record || entry.flaw == Flaw::Malformed)
            return;
        const std::string tag = std::to_string(index);
        if (vyini::setIniValue(&copy, recordName(*entry.record).c_str(), "Alias", tag.c_str(), '"') < 0)
            throw std::bad_alloc();
        entryOf[tag] = index;
    }

    void transfer(const vykel::DeviceTable& devices) {
        try {
            vykel::TraditionalAliasTransferManager::transfer(&copy, devices, this);
        } catch (const vyerr::ExceptionBase& exception) {
            auto& entries = preview.entries;
            preview.fails = std::any_of(entries.begin(), entries.end(), [](const EntryPreview& entry) {
                return entry.outcome == Outcome::Malformed;
            });
            if (!preview.fails ||
                exception.status()->code != vykel::toInteger(vykel::StatusCode::ConfigurationFault))
                throw;
            for (EntryPreview& entry : entries)
                if (entry.outcome == Outcome::NoDevice)
                    entry.outcome = Outcome::Blocked;
        }
    }

    /// Keys may be equal where values were split, and the first of them goes for whichever is consumed.
    void findWhatIsLeft() {
        std::set<std::int32_t> lines;
        const vyini::IniSection* const section = vyini::findIniSection(&copy, "Aliases");
        const vyini::IniEntry* entry = section != nullptr ? section->entries.first() : nullptr;
        for (; entry != nullptr; entry = entry->next)
            lines.insert(entry->line);
        for (EntryPreview& each : preview.entries)
            each.stays = each.flaw == Flaw::OtherLayout || lines.count(each.line) != 0;
    }

    vyini::IniDocument& copy;
    Preview preview;
    std::map<std::string, std::size_t> entryOf; // by what onConsumed can tell
};

} // namespace

Preview previewTransfer(const LegacyFile& untouched, const LegacyFile& copy,
                        const vykel::DeviceTable& devices) {
    return Previewer(untouched, copy.document()).run(devices);
}

} // namespace vykeldev::aliases
