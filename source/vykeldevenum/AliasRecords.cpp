#include "AliasRecords.h"

#include "ini/IniEdit.h"
#include "ini/IniText.h"

namespace vykel {

namespace {

constexpr int iniFound = 1;

/// Reads and decodes a text, if there is one. Returns false when memory is short; then read no further.
bool readText(const vyini::IniDocument& document, vyini::IniSection& section, const char* key,
              std::optional<std::string>& text) {
    const vyini::IniEntry* const entry = vyini::findIniEntry(&section, document.caseSensitive, key);
    vyini::IniString decoded;
    if (entry == nullptr)
        return true;
    if (vyini::decodeIniValue(entry->value, decoded) != 0)
        return false;
    text = decoded.get();
    return true;
}

} // namespace

std::string aliasSectionName(std::size_t index) {
    return "Alias" + std::to_string(index);
}

std::string resourceName(std::uint32_t deviceNumber) {
    return "KEL" + std::to_string(deviceNumber);
}

AliasLayout aliasLayoutOf(vyini::IniDocument* document) {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    if (vyini::getIniUInt(document, "General", "MajorVersion", &major) != iniFound ||
        vyini::getIniUInt(document, "General", "MinorVersion", &minor) != iniFound)
        return AliasLayout::ByResourceName;
    if (major >= 15)
        return AliasLayout::ByTokenFormat2;
    return major == 14 && minor == 7 ? AliasLayout::ByTokenFormat1 : AliasLayout::ByResourceName;
}

std::vector<AliasRecord> readNamedAliases(vyini::IniDocument* document) {
    std::vector<AliasRecord> records;
    vyini::IniSection* const section = vyini::findIniSection(document, aliasesSection);
    const std::uint32_t count = vyini::countIniEntries(section);
    records.reserve(count);
    for (std::uint32_t n = 1; n <= count; ++n) {
        AliasRecord& record = records.emplace_back();
        const vyini::IniEntry* const entry = vyini::getIniEntry(section, n);
        if (entry == nullptr) {
            record.flaw = AliasFlaw::NoAlias;
            continue;
        }
        record.line = entry->line;
        record.alias = entry->key;
        if (entry->value == nullptr)
            record.flaw = AliasFlaw::NoTarget;
        else
            record.target = entry->value;
    }
    return records;
}

vyini::IniSection* findAliasSection(vyini::IniDocument* document, std::size_t index) {
    return vyini::findIniSection(document, aliasSectionName(index).c_str());
}

AliasRecord readTokenAlias(const vyini::IniDocument& document, vyini::IniSection& section) {
    AliasRecord record;
    record.line = section.line;
    if (readText(document, section, "Alias", record.alias))
        readText(document, section, "PersistentToken", record.target);
    const vyini::IniEntry* const local = vyini::findIniEntry(&section, document.caseSensitive, "Local");
    record.local = local != nullptr && vyini::compareIniNames(local->value, "True", 0) == 0;
    if (!record.alias) {
        record.flaw = AliasFlaw::NoAlias;
    } else if (!record.target) {
        record.flaw = AliasFlaw::NoTarget;
    } else if (local == nullptr) {
        record.flaw = AliasFlaw::NoLocal;
    } else if (!record.local && vyini::compareIniNames(local->value, "False", 0) != 0) {
        record.flaw = AliasFlaw::UnknownLocal;
        record.line = local->line;
    }
    return record;
}

AliasTable::AliasTable(std::vector<AliasRecord> read, AliasLayout layout)
    : records(std::move(read)), next(records.size(), none), consumed(records.size(), false) {
    counting.reserve(records.size());
    for (std::size_t i = records.size(); i-- > 0;) {
        if (records[i].flaw != AliasFlaw::None)
            continue;
        const auto [place, isNew] = counting.try_emplace(*records[i].target, i);
        if (!isNew && layout != AliasLayout::ByResourceName) {
            next[i] = place->second;
            place->second = i;
        }
    }
}

const AliasRecord* AliasTable::find(std::string_view target) const {
    const auto place = counting.find(target);
    return place != counting.end() ? &records[place->second] : nullptr;
}

void AliasTable::consume(const AliasRecord& record) {
    const std::size_t index = indexOf(record);
    consumed[index] = true;
    const auto place = counting.find(*record.target);
    if (next[index] == none)
        counting.erase(place);
    else
        place->second = next[index];
}

} // namespace vykel
