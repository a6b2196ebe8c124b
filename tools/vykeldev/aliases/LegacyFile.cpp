#include "aliases/LegacyFile.h"

#include "ini/IniEdit.h"
#include "ini/IniReader.h"
#include "support/Text.h"
#include <algorithm>

namespace vykeldev::aliases {
namespace {

using vykel::AliasFlaw;
using vykel::AliasLayout;
using vykel::AliasRecord;

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
        : document(file), layout(vykel::aliasLayoutOf(&file)), byName(layout == AliasLayout::ByResourceName) {
    }

    std::vector<LegacyEntry> run() {
        std::vector<AliasRecord> names = vykel::readNamedAliases(&document);
        std::vector<AliasRecord> records;
        if (byName) {
            addRead(std::move(names));
        } else {
            for (const AliasRecord& name : names)
                add(name, Flaw::OtherLayout, "the file's version asks for tokens");
            while (auto* const section = vykel::findAliasSection(&document, records.size()))
                records.push_back(vykel::readTokenAlias(document, *section));
            addRead(records);
        }
        for (auto* section = document.sections.first(); section != nullptr; section = section->next)
            addUnread(*section, records.size());
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return a.line < b.line; });
        return std::move(entries);
    }

private:
    LegacyEntry& add(const AliasRecord& record, Flaw flaw, std::string detail = "") {
        return entries.emplace_back(
            LegacyEntry{record.alias, record.target, record.line, flaw, std::move(detail), std::nullopt});
    }

    /// Adds the records that a transfer reads.
    void addRead(std::vector<AliasRecord> records) {
        const vykel::AliasTable table(std::move(records), layout);
        for (const AliasRecord& record : table.all()) {
            const auto index = static_cast<std::size_t>(&record - table.all().data());
            LegacyEntry& entry = addJudged(record, table, index);
            if (!byName)
                entry.record = index;
        }
    }

    LegacyEntry& addJudged(const AliasRecord& record, const vykel::AliasTable& table, std::size_t index) {
        if (record.flaw != AliasFlaw::None)
            return add(record, Flaw::Malformed, flawText(record.flaw, index));
        if (byName && !isResourceName(*record.target))
            return add(record, Flaw::ResourceName,
                       "not a resource name: expected KEL and a number, such as KEL3");
        if (!record.local)
            return add(record, Flaw::NotLocal);
        const AliasRecord* const counting = table.find(*record.target);
        if (counting == &record)
            return add(record, Flaw::None);
        const char* const shared = byName ? " names the same device" : " has the same token";
        return add(record, Flaw::Duplicate, concat("line ", counting->line, shared));
    }

    std::string flawText(AliasFlaw flaw, std::size_t index) const {
        if (flaw == AliasFlaw::NoAlias)
            return "Alias is missing or empty";
        if (flaw == AliasFlaw::NoTarget)
            return "PersistentToken is missing or empty";
        if (flaw == AliasFlaw::NoLocal)
            return "Local is missing or empty";
        vyini::IniSection* const section = vykel::findAliasSection(&document, index);
        const char* const local = vyini::findIniEntry(section, document.caseSensitive, "Local")->value;
        return "Local is '" + std::string(local) + "', neither True nor False";
    }

    /// Adds the record of a section, if it holds one that no transfer reads. `count`: those before are read.
    void addUnread(vyini::IniSection& section, std::size_t count) {
        const auto number = numberInName(section.name);
        if (!number)
            return;
        const std::string name = vykel::aliasSectionName(*number);
        AliasRecord record = vykel::readTokenAlias(document, section);
        record.line = section.line; // its Local may be unknown: that is no flaw here
        if (byName)
            add(record, Flaw::OtherLayout, "the file's version asks for resource names");
        else if (vyini::compareIniNames(section.name, name.c_str(), 0) != 0)
            add(record, Flaw::BehindGap, "it is not written " + name);
        else if (*number >= count)
            add(record, Flaw::BehindGap, "there is no " + vykel::aliasSectionName(count));
    }

    vyini::IniDocument& document;
    AliasLayout layout;
    bool byName;
    std::vector<LegacyEntry> entries;
};

} // namespace

bool isAliasSection(const std::string& name) {
    return vyini::compareIniNames(name.c_str(), "General", 0) == 0 ||
           vyini::compareIniNames(name.c_str(), "Aliases", 0) == 0 || numberInName(name).has_value();
}

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

} // namespace vykeldev::aliases
