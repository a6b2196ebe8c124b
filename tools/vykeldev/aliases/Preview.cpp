#include "aliases/Preview.h"

#include "errors/Exception.h"
#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <map>
#include <new>

namespace vykeldev::aliases {
namespace {

using vykel::AliasLayout;

constexpr const char* aliasesSection = "Aliases";

std::string recordName(std::size_t index) {
    return "Alias" + std::to_string(index);
}

/// The number in a section name "Alias<number>", however it is written; or none.
std::optional<std::uint32_t> recordNumber(const vyini::IniSection& section) {
    const std::string name = section.name;
    const char* digits = name.c_str() + 5;
    std::uint32_t number = 0;
    const bool isRecord = name.size() > 5 &&
                          vyini::compareIniNames(name.substr(0, 5).c_str(), "Alias", 0) == 0 &&
                          vyini::readDigits(digits, number) && *digits == '\0';
    return isRecord ? std::optional(number) : std::nullopt;
}

class Previewer final : public vykel::AliasTransferObserver {
public:
    Previewer(vyini::IniDocument& original, vyini::IniDocument& changed)
        : untouched(original), copy(changed) {}

    Preview run(const vykel::DeviceTable& devices) {
        preview.layout = vykel::TraditionalAliasTransferManager::layoutOf(&untouched);
        addNames();
        addRecords();
        transfer(devices);
        judgeTheRest();
        std::stable_sort(preview.entries.begin(), preview.entries.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        return std::move(preview);
    }

    void onConsumed(const std::string& alias, std::uint32_t deviceNumber, bool given) override {
        LegacyEntry& entry = preview.entries[entryOfAlias.at(alias)];
        entry.outcome = given ? Outcome::Moves : Outcome::Dropped;
        entry.device = deviceNumber;
        entry.stays = false;
    }

private:
    bool byName() const noexcept { return preview.layout == AliasLayout::ByResourceName; }

    /// Adds an entry, which is left out of account when there is a reason for that.
    LegacyEntry& add(std::int32_t line, const std::string& reasonUnreached) {
        LegacyEntry& entry = preview.entries.emplace_back();
        entry.line = line;
        entry.detail = reasonUnreached;
        if (!reasonUnreached.empty())
            entry.outcome = Outcome::Unreached;
        return entry;
    }

    void addNames() {
        const vyini::IniSection* const section = vyini::findIniSection(&untouched, aliasesSection);
        const vyini::IniEntry* name = section != nullptr ? section->entries.first() : nullptr;
        for (; name != nullptr; name = name->next) {
            if (byName())
                entryOfAlias[name->key] = preview.entries.size();
            LegacyEntry& entry = add(name->line, byName() ? "" : "the file's version asks for tokens");
            entry.alias = name->key;
            entry.target = name->value;
        }
    }

    void addRecords() {
        std::size_t count = 0; // up to the first gap
        if (!byName()) {
            while (auto* const section = vyini::findIniSection(&untouched, recordName(count).c_str()))
                addReachedRecord(*section, count++);
        }
        const std::string reason =
            byName() ? "the file's version asks for resource names" : "there is no " + recordName(count);
        for (auto* section = untouched.sections.first(); section != nullptr; section = section->next) {
            const auto number = recordNumber(*section);
            const bool reached = number && *number < count &&
                                 vyini::compareIniNames(section->name, recordName(*number).c_str(), 0) == 0;
            if (number && !reached)
                addTexts(*section, add(section->line, reason));
        }
    }

    void addReachedRecord(vyini::IniSection& section, std::size_t index) {
        LegacyEntry& entry = add(section.line, "");
        addTexts(section, entry);
        judge(section, entry);
        if (!entry.alias)
            return;
        // Several records may hold the same alias. Called by its number, each is known when it is consumed.
        const std::string tag = std::to_string(index);
        if (vyini::setIniValue(&copy, recordName(index).c_str(), "Alias", tag.c_str(), '"') < 0)
            throw std::bad_alloc();
        entryOfAlias[tag] = preview.entries.size() - 1;
    }

    const vyini::IniEntry* find(vyini::IniSection& section, const char* key) const {
        return vyini::findIniEntry(&section, untouched.caseSensitive, key);
    }

    std::optional<std::string> decoded(vyini::IniSection& section, const char* key) const {
        const vyini::IniEntry* const entry = find(section, key);
        if (entry == nullptr)
            return std::nullopt;
        vyini::IniString text;
        if (vyini::decodeIniValue(entry->value, text) < 0)
            throw std::bad_alloc();
        return text.get(); // cppcheck-suppress returnDanglingLifetime ; a std::string is made of it
    }

    void addTexts(vyini::IniSection& section, LegacyEntry& entry) const {
        entry.alias = decoded(section, "Alias");
        entry.target = decoded(section, "PersistentToken");
    }

    /// What can be said of a record by itself.
    void judge(vyini::IniSection& section, LegacyEntry& entry) const {
        for (const char* const key : {"Alias", "PersistentToken", "Local"}) {
            if (find(section, key) == nullptr) {
                entry.outcome = Outcome::Malformed;
                entry.detail = std::string(key) + " is missing or empty";
                return;
            }
        }
        const vyini::IniEntry& local = *find(section, "Local");
        if (vyini::compareIniNames(local.value, "False", 0) == 0) {
            entry.outcome = Outcome::NotLocal;
        } else if (vyini::compareIniNames(local.value, "True", 0) != 0) {
            entry.outcome = Outcome::Malformed;
            entry.detail = "Local is '" + std::string(local.value) + "', neither True nor False";
            entry.line = local.line;
        }
    }

    void transfer(const vykel::DeviceTable& devices) {
        try {
            vykel::TraditionalAliasTransferManager::transfer(&copy, devices, this);
        } catch (const vyerr::ExceptionBase& exception) {
            preview.fails =
                std::any_of(preview.entries.begin(), preview.entries.end(),
                            [](const auto& entry) { return entry.outcome == Outcome::Malformed; });
            const bool expected =
                exception.status()->code == vykel::toInteger(vykel::StatusCode::ConfigurationFault);
            if (!preview.fails || !expected)
                throw;
        }
    }

    /// What can be said only after the transfer.
    void judgeTheRest() {
        auto& entries = preview.entries;
        if (preview.fails) {
            for (LegacyEntry& entry : entries) {
                if (entry.outcome == Outcome::NoDevice)
                    entry.outcome = Outcome::Blocked;
            }
        } else if (byName()) { // the last one counts; the others leave with their section
            const bool stay = vyini::findIniSection(&copy, aliasesSection) != nullptr;
            markHidden(entries.rbegin(), entries.rend(), stay, " names the same device");
        } else { // the first one counts
            markHidden(entries.begin(), entries.end(), true, " has the same token");
        }
    }

    /// Of the entries for one device, marks those behind the first that found none.
    template <typename Iterator>
    static void markHidden(Iterator begin, Iterator end, bool stay, const char* reason) {
        std::map<std::string, std::int32_t> firstLine; // by target
        for (; begin != end; ++begin) {
            if (begin->outcome == Outcome::Unreached)
                continue;
            const auto [place, isNew] = firstLine.emplace(*begin->target, begin->line);
            if (!isNew && begin->outcome == Outcome::NoDevice) {
                begin->outcome = Outcome::Unreached;
                begin->detail = "line " + std::to_string(place->second) + reason;
                begin->stays = stay;
            }
        }
    }

    vyini::IniDocument& untouched;
    vyini::IniDocument& copy;
    Preview preview;
    std::map<std::string, std::size_t> entryOfAlias; // by what the copy calls the alias
};

} // namespace

Preview previewTransfer(vyini::IniDocument& untouched, vyini::IniDocument& copy,
                        const vykel::DeviceTable& devices) {
    return Previewer(untouched, copy).run(devices);
}

} // namespace vykeldev::aliases
