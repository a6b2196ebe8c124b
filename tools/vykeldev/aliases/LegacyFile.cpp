#include "aliases/LegacyFile.h"

#include "ini/IniEdit.h"
#include "ini/IniEscape.h"
#include "ini/IniLoad.h"
#include <algorithm>
#include <map>
#include <new>

namespace vykeldev::aliases {
namespace {

using vykel::AliasLayout;

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

/// Whether a device's number can give this text.
bool isResourceName(const std::string& name) {
    const char* digits = name.c_str() + 3;
    std::uint32_t number = 0;
    return name.rfind("KEL", 0) == 0 && vyini::readDigits(digits, number) &&
           number != vykel::noDeviceNumber && name == "KEL" + std::to_string(number);
}

class EntryReader {
public:
    EntryReader(vyini::IniDocument& file, bool readsNames) : document(file), byName(readsNames) {}

    std::vector<LegacyEntry> run() {
        addNames();
        addRecords();
        if (byName) // the last one counts
            markDuplicates(entries.rbegin(), entries.rend(), " names the same device");
        else
            markDuplicates(entries.begin(), entries.end(), " has the same token");
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        return std::move(entries);
    }

private:
    static void mark(LegacyEntry& entry, Flaw flaw, std::string detail = "") {
        entry.flaw = flaw;
        entry.detail = std::move(detail);
    }

    void addNames() {
        const vyini::IniSection* const section = vyini::findIniSection(&document, "Aliases");
        const vyini::IniEntry* name = section != nullptr ? section->entries.first() : nullptr;
        for (; name != nullptr; name = name->next) {
            LegacyEntry& entry = entries.emplace_back();
            entry.line = name->line;
            entry.alias = name->key;
            entry.target = name->value;
            if (!byName)
                mark(entry, Flaw::OtherLayout, "the file's version asks for tokens");
            else if (!isResourceName(*entry.target))
                mark(entry, Flaw::ResourceName, "no device is called so, but KEL and its number, as in KEL3");
        }
    }

    void addRecords() {
        std::size_t count = 0; // up to the first gap
        if (!byName) {
            while (auto* const section = vyini::findIniSection(&document, recordName(count).c_str())) {
                LegacyEntry& entry = addRecord(*section);
                entry.record = count++;
                judge(*section, entry);
            }
        }
        for (auto* section = document.sections.first(); section != nullptr; section = section->next) {
            const auto number = recordNumber(*section);
            if (!number)
                continue;
            const std::string name = recordName(*number);
            const bool isPlain = vyini::compareIniNames(section->name, name.c_str(), 0) == 0;
            if (byName)
                mark(addRecord(*section), Flaw::OtherLayout, "the file's version asks for resource names");
            else if (!isPlain)
                mark(addRecord(*section), Flaw::BehindGap, "it is not written " + name);
            else if (*number >= count)
                mark(addRecord(*section), Flaw::BehindGap, "there is no " + recordName(count));
        }
    }

    LegacyEntry& addRecord(vyini::IniSection& section) {
        LegacyEntry& entry = entries.emplace_back();
        entry.line = section.line;
        entry.alias = decoded(section, "Alias");
        entry.target = decoded(section, "PersistentToken");
        return entry;
    }

    const vyini::IniEntry* find(vyini::IniSection& section, const char* key) const {
        return vyini::findIniEntry(&section, document.caseSensitive, key);
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

    /// What can be said of a record by itself.
    void judge(vyini::IniSection& section, LegacyEntry& entry) const {
        for (const char* const key : {"Alias", "PersistentToken", "Local"})
            if (find(section, key) == nullptr)
                return mark(entry, Flaw::Malformed, std::string(key) + " is missing or empty");
        const vyini::IniEntry& local = *find(section, "Local");
        if (vyini::compareIniNames(local.value, "False", 0) == 0) {
            mark(entry, Flaw::NotLocal);
        } else if (vyini::compareIniNames(local.value, "True", 0) != 0) {
            mark(entry, Flaw::Malformed,
                 "Local is '" + std::string(local.value) + "', neither True nor False");
            entry.line = local.line;
        }
    }

    /// Of the entries for one device, marks those behind the first.
    template <class Iterator>
    static void markDuplicates(Iterator begin, Iterator end, const char* reason) {
        std::map<std::string, std::int32_t> firstLine; // by target
        for (; begin != end; ++begin) {
            if (begin->flaw != Flaw::None && begin->flaw != Flaw::NotLocal)
                continue;
            const auto [place, isNew] = firstLine.emplace(*begin->target, begin->line);
            if (!isNew && begin->flaw == Flaw::None)
                mark(*begin, Flaw::Duplicate, "line " + std::to_string(place->second) + reason);
        }
    }

    vyini::IniDocument& document;
    bool byName;
    std::vector<LegacyEntry> entries;
};

} // namespace

std::string recordName(std::size_t index) {
    return "Alias" + std::to_string(index);
}

LegacyFile::LegacyFile(const std::string& path) {
    const vyini::IniSkippedLineObserver observer = {keepSkipped, this};
    loadResult = vyini::loadIniFile(text.document(), path.c_str(), &observer);
}

void LegacyFile::keepSkipped(void* file, vyini::IniRange line, std::int32_t number) {
    if (!line.empty())
        static_cast<LegacyFile*>(file)->skipped.push_back({number, std::string(line.begin, line.end)});
}

AliasLayout LegacyFile::layout() const {
    return vykel::TraditionalAliasTransferManager::layoutOf(&document());
}

std::vector<LegacyEntry> LegacyFile::entries() const {
    return EntryReader(document(), layout() == AliasLayout::ByResourceName).run();
}

} // namespace vykeldev::aliases
