#include "machine/LegacyFile.h"

#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "system/Text.h"
#include "vybase/owners.h"
#include <algorithm>
#include <cstring>
#include <map>

namespace vykeldev {
namespace {

using vykel::AliasFlaw;
using vykel::AliasLayout;

/// The number in a section name "Alias<number>", however it is written; or none.
std::optional<std::uint32_t> numberInName(const std::string& name) {
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
           number != vykel::noDeviceNumber && name == vykel::resourceName(number);
}

class EntryReader {
public:
    explicit EntryReader(vyini::IniDocument& file)
        : document(file), byName(vykel::aliasLayoutOf(&file) == AliasLayout::ByResourceName) {}

    std::vector<LegacyEntry> run() {
        addNames();
        const std::size_t count = byName ? 0 : addRecords();
        for (auto* section = document.sections.first(); section != nullptr; section = section->next)
            addUnread(*section, count);
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        return std::move(entries);
    }

private:
    /// Adds the aliases by resource name. Of several for one device a transfer uses the last.
    void addNames() {
        const vyini::IniSection* const section = vyini::findIniSection(&document, vykel::aliasesSection);
        const vyini::IniEntry* const first = section != nullptr ? section->entries.first() : nullptr;
        std::map<std::string, std::int32_t> usedLine; // by resource name
        for (const auto* entry = first; entry != nullptr; entry = entry->next)
            usedLine[entry->value] = entry->line;
        for (const auto* name = first; name != nullptr; name = name->next) {
            LegacyEntry& entry = entries.emplace_back(LegacyEntry{name->key, name->value, name->line});
            if (!byName)
                judge(entry, Flaw::OtherLayout, "the file's version asks for tokens");
            else if (!isResourceName(*entry.target))
                judge(entry, Flaw::ResourceName,
                      "not a resource name: expected KEL and a number, such as KEL3");
            else if (usedLine[*entry.target] != entry.line)
                judge(entry, Flaw::Duplicate,
                      concat("line ", usedLine[*entry.target], " names the same device"));
        }
    }

    /// Adds the records by token that a transfer reads, and returns how many there are. Of several for one
    /// device the first decides.
    std::size_t addRecords() {
        std::map<std::string, std::int32_t> firstLine; // by token
        std::size_t count = 0;
        for (; auto* const section = vykel::findAliasSection(&document, count); ++count) {
            vykel::TraditionalAliasRecord record;
            const AliasFlaw flaw = vykel::readAliasRecord(document, *section, record);
            LegacyEntry& entry = addRecord(*section, record);
            entry.record = count;
            if (flaw != AliasFlaw::None)
                judgeMalformed(entry, flaw, *section);
            else if (const auto [first, isNew] = firstLine.try_emplace(record.persistentToken, section->line);
                     !record.local)
                judge(entry, Flaw::NotLocal, "");
            else if (!isNew)
                judge(entry, Flaw::Duplicate, concat("line ", first->second, " has the same token"));
        }
        return count;
    }

    LegacyEntry& addRecord(vyini::IniSection& section, const vykel::TraditionalAliasRecord& record) {
        LegacyEntry& entry = entries.emplace_back();
        if (find(section, "Alias") != nullptr)
            entry.alias = record.alias;
        if (find(section, "PersistentToken") != nullptr)
            entry.target = record.persistentToken;
        entry.line = section.line;
        return entry;
    }

    const vyini::IniEntry* find(vyini::IniSection& section, const char* key) const {
        return vyini::findIniEntry(&section, document.caseSensitive, key);
    }

    static void judge(LegacyEntry& entry, Flaw flaw, std::string detail) {
        entry.flaw = flaw;
        entry.detail = std::move(detail);
    }

    void judgeMalformed(LegacyEntry& entry, AliasFlaw flaw, vyini::IniSection& section) const {
        static constexpr const char* keys[] = {"", "Alias", "PersistentToken", "Local"}; // as AliasFlaw
        if (flaw != AliasFlaw::UnknownLocal)
            return judge(entry, Flaw::Malformed,
                         concat(keys[static_cast<std::size_t>(flaw)], " is missing or empty"));
        const vyini::IniEntry* const local = find(section, "Local");
        entry.line = local->line;
        judge(entry, Flaw::Malformed, concat("Local is '", local->value, "', neither True nor False"));
    }

    /// Adds the record of a section, if it holds one that no transfer reads. `count`: those before are read.
    void addUnread(vyini::IniSection& section, std::size_t count) {
        const auto number = numberInName(section.name);
        if (!number)
            return;
        const std::string name = vykel::aliasSectionName(*number);
        const bool isMisspelt = vyini::compareIniNames(section.name, name.c_str(), 0) != 0;
        if (!byName && !isMisspelt && *number < count)
            return;
        vykel::TraditionalAliasRecord record;
        vykel::readAliasRecord(document, section, record); // its Local may be unknown: that is no flaw here
        LegacyEntry& entry = addRecord(section, record);
        if (byName)
            judge(entry, Flaw::OtherLayout, "the file's version asks for resource names");
        else if (isMisspelt)
            judge(entry, Flaw::BehindGap, "it is not written " + name);
        else
            judge(entry, Flaw::BehindGap, "there is no " + vykel::aliasSectionName(count));
    }

    vyini::IniDocument& document;
    bool byName;
    std::vector<LegacyEntry> entries;
};

/// Whether a section of that name is about aliases: General, Aliases, or Alias and a number.
bool isAliasSection(const std::string& name) {
    return vyini::compareIniNames(name.c_str(), "General", 0) == 0 ||
           vyini::compareIniNames(name.c_str(), "Aliases", 0) == 0 || numberInName(name).has_value();
}

} // namespace

LegacyFile::LegacyFile(const std::string& path) {
    const auto keepSkipped = [](void* lines, vyini::IniRange line, std::int32_t number) {
        if (!line.empty())
            static_cast<decltype(skippedLines)*>(lines)->push_back(
                {number, std::string(line.begin, line.end)});
    };
    const vyini::IniSkippedLineObserver observer = {keepSkipped, &skippedLines};
    result = vyini::loadIniFile(text.document(), path.c_str(), &observer);
}

std::vector<LegacyEntry> LegacyFile::entries() const {
    return EntryReader(document()).run();
}

std::vector<LegacyLine> aliasLinesOf(const std::string& path) {
    const vybase::FileStream file(std::fopen(path.c_str(), "rb"));
    char mark[3] = {};
    const bool isMarked = file && std::fread(mark, 1, sizeof mark, file.get()) == sizeof mark &&
                          std::memcmp(mark, "\xEF\xBB\xBF", sizeof mark) == 0;
    if (!file || std::fseek(file.get(), isMarked ? sizeof mark : 0, SEEK_SET) != 0)
        return {};
    std::vector<LegacyLine> kept;
    vyini::IniLineReader reader(file.get(), 0);
    vyini::IniRange range = {};
    bool isAliases = false;
    while (reader.readLine(range) == 1) {
        const std::string line(range.begin, range.end);
        const std::size_t first = line.find_first_not_of(" \t\v\f");
        if (first == std::string::npos)
            continue;
        if (line[first] == '[') // also one without its end
            isAliases = isAliasSection(line.substr(first + 1, line.find(']') - first - 1));
        if (isAliases)
            kept.push_back({reader.lineNumber(), line});
    }
    return kept;
}

} // namespace vykeldev
