#ifndef VYKELDEVENUM_ALIASRECORDS_H
#define VYKELDEVENUM_ALIASRECORDS_H

#include "ini/IniDocument.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The aliases in the legacy file, as an alias transfer reads them. Only this unit decides which record is
/// malformed, where reading ends and which of several records for one device counts. The functions change
/// nothing in a document but its current section. One thread uses a document at a time. All may throw
/// std::bad_alloc.
namespace vykel {

/// The layouts of the file. ByTokenFormat1 and ByTokenFormat2 differ only in the format of the persistent
/// tokens.
enum class AliasLayout { ByResourceName, ByTokenFormat1, ByTokenFormat2 };

/// Why a record is malformed. When one record is, no alias in the file is handed over.
enum class AliasFlaw {
    None,
    NoAlias,
    NoTarget,
    NoLocal,
    UnknownLocal ///< "Local" is neither true nor false
};

/// One alias. What is missing in a malformed record has no value.
struct AliasRecord {
    std::optional<std::string> alias;
    std::optional<std::string> target; ///< the device: a resource name or a persistent token
    bool local = true;                 ///< only a local alias is handed over
    AliasFlaw flaw = AliasFlaw::None;  ///< the first flaw found
    std::int32_t line = -1;            ///< in the file, from 1; -1: unknown
};

/// The section of the layout by resource name.
constexpr const char* aliasesSection = "Aliases";

/// "Alias<index>": the name of a section of the layout by token.
std::string aliasSectionName(std::size_t index);

/// "KEL<number>": the resource name of a device.
std::string resourceName(std::uint32_t deviceNumber);

/// The layout that a document is written in.
AliasLayout aliasLayoutOf(vyini::IniDocument* document);

/// The records of the layout by resource name, in order.
std::vector<AliasRecord> readNamedAliases(vyini::IniDocument* document);

/// The section with the record of an index in the layout by token, or null. Records are read from index 0 up
/// to the first that is missing.
vyini::IniSection* findAliasSection(vyini::IniDocument* document, std::size_t index);

/// The record of the layout by token that a section holds.
AliasRecord readTokenAlias(const vyini::IniDocument& document, vyini::IniSection& section);

/// Finds the record that counts for a device. In the layout by resource name that is the last record of the
/// name; the others never count. In the layouts by token it is the first record, and after that was consumed
/// the next one. Malformed records do not count. One thread uses it.
class AliasTable {
public:
    /// Takes the records in the order of the file. Throws std::bad_alloc.
    AliasTable(std::vector<AliasRecord> read, AliasLayout layout);

    /// All records, in the order of the file.
    const std::vector<AliasRecord>& all() const noexcept { return records; }

    /// The record that counts, or null; valid as long as this object.
    const AliasRecord* find(std::string_view target) const;

    /// Marks a record that find() returned as handed over: it no longer counts.
    void consume(const AliasRecord& record);

    /// Whether a record of this table was consumed.
    bool isConsumed(const AliasRecord& record) const noexcept { return consumed[indexOf(record)]; }

    /// Whether no record counts any more.
    bool empty() const noexcept { return counting.empty(); }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t indexOf(const AliasRecord& record) const noexcept {
        return static_cast<std::size_t>(&record - records.data());
    }

    const std::vector<AliasRecord> records;
    std::unordered_map<std::string_view, std::size_t> counting; ///< by target; the records own the texts
    std::vector<std::size_t> next; ///< of each record: the one that counts after it, or none
    std::vector<bool> consumed;
};

} // namespace vykel

#endif
