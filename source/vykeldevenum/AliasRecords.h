#ifndef VYKELDEVENUM_ALIASRECORDS_H
#define VYKELDEVENUM_ALIASRECORDS_H

#include "ini/IniDocument.h"
#include <cstddef>
#include <cstdint>
#include <string>

/// The aliases in the legacy file, as an alias transfer reads them. The file has one of two layouts:
///
///     by resource name    by persistent token
///     [Aliases]           [General]          [Alias0]
///     Lab1=KEL0           MajorVersion=15    Alias="Lab 1"
///     Lab2=KEL3           MinorVersion=0     PersistentToken="T1"
///                                            Local=True
///
/// Only this unit decides which layout a file has, which record is malformed and where reading ends. The
/// functions change nothing in a document but its current section. One thread uses a document at a time. All
/// may throw std::bad_alloc.
namespace vykel {

/// The layouts of the file. ByTokenFormat1 and ByTokenFormat2 differ only in the format of the persistent
/// tokens.
enum class AliasLayout { ByResourceName, ByTokenFormat1, ByTokenFormat2 };

/// One alias in the layouts by token.
struct TraditionalAliasRecord {
    std::string alias;
    std::string persistentToken; ///< the device
    bool local = false;          ///< only a local alias is handed over
};

/// Why a record is malformed. When one record is, no alias in the file is handed over.
enum class AliasFlaw {
    None,
    NoAlias,
    NoToken,
    NoLocal,
    UnknownLocal ///< "Local" is neither true nor false
};

/// The section of the layout by resource name. Its keys are aliases, its values resource names.
constexpr const char* aliasesSection = "Aliases";

/// "Alias<index>": the name of a section of the layouts by token.
std::string aliasSectionName(std::size_t index);

/// "KEL<number>": the resource name of a device.
std::string resourceName(std::uint32_t deviceNumber);

/// The layout that a document is written in.
AliasLayout aliasLayoutOf(vyini::IniDocument* document);

/// The section with the record of an index in the layouts by token, or null. Records are read from index 0 up
/// to the first that is missing.
vyini::IniSection* findAliasSection(vyini::IniDocument* document, std::size_t index);

/// Reads the record that a section holds into an empty one, and returns the first flaw. A text that is
/// missing stays empty.
AliasFlaw readAliasRecord(const vyini::IniDocument& document, vyini::IniSection& section,
                          TraditionalAliasRecord& record);

} // namespace vykel

#endif
