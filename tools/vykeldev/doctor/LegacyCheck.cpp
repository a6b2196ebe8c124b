#include "doctor/LegacyCheck.h"

#include "doctor/Files.h"
#include "errors/Exception.h"
#include "ini/IniEdit.h"
#include "ini/IniLoad.h"
#include "pellumkelddk/user/AutoIniText.h"
#include "TraditionalAliasTransferManager.h"
#include <map>

namespace vykeldev::doctor {
namespace {

using Manager = vykel::TraditionalAliasTransferManager;
using vykel::AliasLayout;

/// One check of one file.
class LegacyFile {
public:
    LegacyFile(std::string filePath, Findings& found) : path(std::move(filePath)), findings(found) {}

    void check(LegacyState& state) {
        const int result = vyini::loadIniFile(document(), path.c_str());
        if (result == vyini::IniNoFile)
            return;
        state.state = "unreadable";
        if (result == vyini::IniWideText) {
            add(FindingId::LegacyEncoding, 0, "");
        } else if (result != 0) {
            add(FindingId::LegacyUnreadable, 0, "reading it gives " + std::to_string(result));
        } else {
            state.state = "read";
            checkLines();
            const bool byName = Manager::layoutOf(document()) == AliasLayout::ByResourceName;
            state.layout = byName ? "resource names" : "tokens";
            if (byName)
                checkResourceNames();
            else
                checkRecords();
        }
    }

private:
    vyini::IniDocument* document() const noexcept { return text.document(); }

    void add(FindingId id, int line, const std::string& detail) {
        constexpr std::size_t longestDetail = 200;
        findings.push_back({id, path, detail.substr(0, longestDetail), line});
    }

    /// The parser tells only the first line that it cannot use, and blank ones count.
    void checkLines() {
        std::string bytes;
        if (readFile(path, bytes) != ERROR_SUCCESS)
            return;
        int number = 0;
        for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end + 1) {
            end = std::min(bytes.find('\n', begin), bytes.size());
            ++number;
            if (isIgnored(bytes.substr(begin, end - begin), number == 1))
                add(FindingId::LegacyLineIgnored, number, bytes.substr(begin, end - begin));
        }
    }

    static bool isIgnored(std::string line, bool mayHaveMark) {
        if (mayHaveMark && line.rfind("\xEF\xBB\xBF", 0) == 0)
            line.erase(0, 3);
        const vyini::IniRange range = vyini::withoutTrailingBlanks(
            vyini::withoutLeadingBlanks({line.data(), line.data() + line.size()}));
        const std::string content(range.begin, range.end);
        if (content.empty() || content[0] == ';')
            return false;
        if (content[0] == '[')
            return content.find(']') == std::string::npos;
        const std::size_t separator = content.find('=');
        return separator == std::string::npos || separator == 0 || separator + 1 == content.size();
    }

    /// Sections named Alias<number>, which only the token layout reads.
    void addSections(FindingId id) {
        for (const auto* section = document()->sections.first(); section != nullptr;
             section = section->next) {
            const std::string name = section->name;
            const bool isNumbered = name.size() > 5 &&
                                    vyini::compareIniNames(name.substr(0, 5).c_str(), "Alias", 0) == 0 &&
                                    name.find_first_not_of("0123456789", 5) == std::string::npos;
            if (isNumbered)
                add(id, section->line, "[" + name + "]");
        }
    }

    void checkResourceNames() {
        addSections(FindingId::LegacyOtherLayout);
        std::map<std::string, const vyini::IniEntry*> last; // by resource name; the last one counts
        vyini::IniSection* const section = vyini::findIniSection(document(), "Aliases");
        const auto* entry = section != nullptr ? section->entries.first() : nullptr;
        for (; entry != nullptr; entry = entry->next) {
            if (!isResourceName(entry->value)) {
                add(FindingId::LegacyResourceName, entry->line, entryText(*entry));
                continue;
            }
            const vyini::IniEntry*& previous = last[entry->value];
            if (previous != nullptr)
                add(FindingId::LegacyDuplicate, previous->line,
                    entryText(*previous) + " gives way to line " + std::to_string(entry->line));
            previous = entry;
        }
    }

    static std::string entryText(const vyini::IniEntry& entry) {
        return std::string(entry.key) + " = " + entry.value;
    }

    /// Whether a device's number can give this text.
    static bool isResourceName(const std::string& name) {
        const char* digits = name.c_str() + 3;
        std::uint32_t number = 0;
        return name.rfind("KEL", 0) == 0 && vyini::readDigits(digits, number) &&
               number != vykel::noDeviceNumber && name == "KEL" + std::to_string(number);
    }

    void checkRecords() {
        if (const auto* section = vyini::findIniSection(document(), "Aliases"))
            add(FindingId::LegacyOtherLayout, section->line, "[Aliases]");
        const std::vector<int> lines = recordLines();
        std::vector<vykel::TraditionalAliasRecord> records;
        try {
            Manager::readAliasRecords(document(), records); // takes them out of the document
            addSections(FindingId::LegacyBehindGap);
        } catch (const vyerr::Exception&) {
            addMalformed(records.size());
        }
        std::map<std::string, int> first; // line, by token
        for (std::size_t i = 0; i < records.size(); ++i) {
            const auto [place, isNew] = first.emplace(records[i].persistentToken, lines[i]);
            if (!records[i].local)
                add(FindingId::LegacyNotLocal, lines[i], records[i].alias);
            else if (!isNew)
                add(FindingId::LegacyDuplicate, lines[i],
                    records[i].alias + " has the token of line " + std::to_string(place->second));
        }
    }

    vyini::IniSection* record(std::size_t index) const {
        return vyini::findIniSection(document(), ("Alias" + std::to_string(index)).c_str());
    }

    std::vector<int> recordLines() const {
        std::vector<int> lines;
        while (const auto* section = record(lines.size()))
            lines.push_back(section->line);
        return lines;
    }

    /// The section at which the reading of the records ended.
    void addMalformed(std::size_t index) {
        vyini::IniSection* const section = record(index);
        if (section == nullptr)
            return;
        const std::string name = "[" + std::string(section->name) + "]";
        for (const char* const key : {"Alias", "PersistentToken", "Local"}) {
            if (vyini::findIniEntry(section, document()->caseSensitive, key) == nullptr) {
                add(FindingId::LegacyMalformed, section->line, name + " has no " + key);
                return;
            }
        }
        const auto* const local = vyini::findIniEntry(section, document()->caseSensitive, "Local");
        add(FindingId::LegacyMalformed, local->line, name + " " + entryText(*local));
    }

    std::string path;
    Findings& findings;
    vykel::AutoIniText text;
};

} // namespace

void checkLegacyFile(Report& report) {
    if (report.folder.empty())
        return;
    report.legacy.path = Manager().iniPath();
    LegacyFile(report.legacy.path, report.findings).check(report.legacy);
}

} // namespace vykeldev::doctor
