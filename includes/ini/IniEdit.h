#ifndef INI_INIEDIT_H
#define INI_INIEDIT_H

#include "ini/IniDocument.h"
#include <cstdint>

/// Lookups and edits. Names compare as compareIniNames says. A search returns the first match; a search for a
/// section tries currentSection first. A null name is never found. Nothing touches a file. Searches take the
/// same time in small and large documents.
namespace vyini {

/// The section of that name, which becomes the current one; or null, and the current section stays.
IniSection* findIniSection(IniDocument* document, const char* name) noexcept;

/// The first entry of that key, or null. A null section has no entries.
IniEntry* findIniEntry(IniSection* section, int caseSensitive, const char* key) noexcept;

/// Reads a value as a decimal number with an optional plus sign and blanks around it. Returns 1 with the
/// number in `out`; 0 when section or key is missing or the value is blank; IniNotANumber for anything else,
/// negative numbers and those above 4294967295 included. `out` changes only with 1. lastKeyLine becomes the
/// line of the entry when there is one.
int getIniUInt(IniDocument* document, const char* section, const char* key, std::uint32_t* out) noexcept;

/// Sets a value, without the blanks at its ends, and the quote character that is written around it (0 for
/// none, 0x22, 0x27). An existing entry keeps its place and line; with mergeDuplicates off, a new entry of
/// that key is made instead. A missing section or entry is made at the end. A null `value` is an empty one.
/// Returns 1; IniEmptyName when a name is null or blank; IniMemoryFull, and then sections and entries are as
/// before and there is no current section.
int setIniValue(IniDocument* document, const char* section, const char* key, const char* value,
                int quote) noexcept;

/// Deletes the first section of that name, current or not, with its entries. Returns 1, or 0 when there is
/// none.
int deleteIniSection(IniDocument* document, const char* name) noexcept;

/// Deletes the first entry of that key. Returns 1, or 0 when there is no such section or key.
int deleteIniEntry(IniDocument* document, const char* section, const char* key) noexcept;

/// Number of entries; 0 for a null section.
std::uint32_t countIniEntries(const IniSection* section) noexcept;

/// The n-th entry in order, counted from 1; null when n is outside 1 to the count.
IniEntry* getIniEntry(IniSection* section, std::uint32_t n) noexcept;

} // namespace vyini

#endif
