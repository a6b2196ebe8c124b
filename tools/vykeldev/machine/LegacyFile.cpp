#include "machine/LegacyFile.h"

#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "machine/Findings.h"
#include "system/Text.h"
#include "vybase/owners.h"
#include "vykel/IDevice.h"
#include <algorithm>
#include <cstring>
#include <map>

namespace vykeldev {
namespace {

using vykel::AliasFlaw;

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

void judge(LegacyEntry& entry, const FindingKind& flaw, std::string detail) {
    entry.flaw = &flaw;
    entry.detail = std::move(detail);
}

/// Adds the aliases by resource name. Of several for one device a transfer uses the last.
void addNames(vyini::IniDocument& document, bool byName, std::vector<LegacyEntry>& entries) {
    const vyini::IniSection* const section = vyini::findIniSection(&document, vykel::aliasesSection);
    const vyini::IniEntry* const first = section != nullptr ? section->entries.first() : nullptr;
    std::map<std::string, std::int32_t> usedLine; // by resource name
    for (const auto* name = first; name != nullptr; name = name->next)
        usedLine[name->value] = name->line;
    for (const auto* name = first; name != nullptr; name = name->next) {
        LegacyEntry& entry = entries.emplace_back(LegacyEntry{name->key, name->value, name->line});
        if (!byName)
            judge(entry, finding::legacyOtherLayout, "the file's version asks for tokens");
        else if (!isResourceName(name->value))
            judge(entry, finding::legacyResourceName,
                  "not a resource name: expected KEL and a number, such as KEL3");
        else if (const std::int32_t line = usedLine[name->value]; line != name->line)
            judge(entry, finding::legacyDuplicate, concat("line ", line, " names the same device"));
    }
}

/// The record by token that a section holds, with the flaws that it has by itself.
LegacyEntry readRecord(const vyini::IniDocument& document, vyini::IniSection& section) {
    const auto find = [&](const char* key) {
        return vyini::findIniEntry(&section, document.caseSensitive, key);
    };
    vykel::TraditionalAliasRecord record;
    const AliasFlaw flaw = vykel::readAliasRecord(document, section, record);
    LegacyEntry entry{std::nullopt, std::nullopt, section.line};
    if (find("Alias") != nullptr)
        entry.alias = record.alias;
    if (find("PersistentToken") != nullptr)
        entry.target = record.persistentToken;
    if (flaw == AliasFlaw::UnknownLocal) {
        entry.line = find("Local")->line;
        judge(entry, finding::legacyMalformed,
              concat("Local is '", find("Local")->value, "', neither True nor False"));
    } else if (flaw != AliasFlaw::None) {
        static constexpr const char* keys[] = {"", "Alias", "PersistentToken", "Local"}; // as AliasFlaw
        judge(entry, finding::legacyMalformed,
              concat(keys[static_cast<std::size_t>(flaw)], " is missing or empty"));
    } else if (!record.local) {
        judge(entry, finding::legacyNotLocal, "");
    }
    return entry;
}

/// Adds the records by token. Of several for one device the first that a transfer reads decides.
void addRecords(vyini::IniDocument& document, bool byName, std::vector<LegacyEntry>& entries) {
    std::map<std::string, std::int32_t> firstLine; // by token
    std::size_t count = 0;
    for (; auto* const section = vykel::findAliasSection(&document, count); ++count)
        if (const LegacyEntry entry = readRecord(document, *section); entry.flaw != &finding::legacyMalformed)
            firstLine.try_emplace(*entry.target, entry.line);
    for (auto* section = document.sections.first(); section != nullptr; section = section->next) {
        const auto number = numberInName(section->name);
        if (!number)
            continue;
        LegacyEntry& entry = entries.emplace_back(readRecord(document, *section));
        const std::string name = vykel::aliasSectionName(*number);
        const bool isMisspelt = vyini::compareIniNames(section->name, name.c_str(), 0) != 0;
        const bool isRead = !byName && !isMisspelt && *number < count;
        if (!isRead)
            entry.line = section->line; // not that of a value to correct
        if (byName)
            judge(entry, finding::legacyOtherLayout, "the file's version asks for resource names");
        else if (isMisspelt)
            judge(entry, finding::legacyBehindGap, "it is not written " + name);
        else if (!isRead)
            judge(entry, finding::legacyBehindGap, "there is no " + vykel::aliasSectionName(count));
        else if (entry.flaw == nullptr && firstLine[*entry.target] != entry.line)
            judge(entry, finding::legacyDuplicate,
                  concat("line ", firstLine[*entry.target], " has the same token"));
    }
}

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
    const bool byName = layout() == vykel::AliasLayout::ByResourceName;
    std::vector<LegacyEntry> all;
    addNames(document(), byName, all);
    addRecords(document(), byName, all);
    std::stable_sort(all.begin(), all.end(),
                     [](const auto& left, const auto& right) { return left.line < right.line; });
    return all;
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
