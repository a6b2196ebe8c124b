#ifndef INI_INIDOCUMENT_H
#define INI_INIDOCUMENT_H

#include "ini/IniCode.h"
#include "ini/IniList.h"
#include "ini/IniMemory.h"
#include <cstddef>
#include <cstdint>
#include <windows.h>

/// The INI engine: a text configuration file as an editable document. IniReader.h reads one, IniEdit.h looks
/// up and changes it, IniWriter.h writes it; IniText.h puts arbitrary text into values.
///
/// The engine is procedural: plain structures and integer results. No function throws; a failed one leaves
/// the document usable. A document is used by one thread at a time, different documents by any.
namespace vyini {

/// Bits of IniDocument::parseFlags.
enum IniParseFlag : std::int32_t {
    /// Entries with nothing after the separator are kept; otherwise such a line is unusable.
    IniAllowEmptyValue = 0x01,
    /// Double quotes around a value are taken off and remembered in the entry.
    IniStripDoubleQuotes = 0x02,
    /// The same for single quotes.
    IniStripSingleQuotes = 0x04,
    /// A colon separates, too (":=" is one separator), and entries before the first header are kept, in the
    /// section headerlessSection.
    IniColonSeparator = 0x08
};

/// Bits of IniDocument::writeFlags.
enum IniWriteFlag : std::int32_t {
    IniWriteBom = 0x01,       ///< begin the file with the byte-order mark of UTF-8
    IniSafeSave = 0x02,       ///< write a temporary file and replace the target with it in one step
    IniTempByPattern = 0x04,  ///< name that file ini$$<n>.TMP; otherwise like the target, with extension TMP
    IniSpacedEquals = 0x08,   ///< separate key and value by " = " instead of "="
    IniBlankLineRules = 0x10, ///< blank lines only around sections made in memory, not after every section
    IniFlushToDisk = 0x20     ///< flush the file to the disk before it is closed
};

/// The name under which entries before the first header are kept; written without a header.
inline constexpr char headerlessSection[] = "(null)";

/// One key with its value.
struct IniEntry {
    IniEntry* next = nullptr;
    IniEntry* previous = nullptr;
    const char* key = "";   ///< never null, trimmed
    const char* value = ""; ///< never null, trimmed, without its quotes
    std::int32_t line = -1; ///< line in the file, from 1; -1: made in memory
    std::uint8_t quote = 0; ///< 0, 0x22 or 0x27: the quotes around the value in the file
    bool ownsKey = false;   ///< key is on the heap; otherwise it is part of the document's text
    bool ownsValue = false; ///< the same for value

    IniEntry() noexcept = default;
    ~IniEntry();
    IniEntry(const IniEntry&) = delete;
    IniEntry& operator=(const IniEntry&) = delete;
};

/// A named, ordered list of entries.
struct IniSection {
    IniSection* next = nullptr;
    IniSection* previous = nullptr;
    const char* name = "";     ///< never null, trimmed
    IniList<IniEntry> entries; ///< in the order of the file; new ones at the end
    std::int32_t line = -1;    ///< line of the header in the file, from 1; -1: made in memory
    bool ownsName = false; ///< name is on the heap; otherwise it is part of the document's text, or static

    IniSection() noexcept = default;
    ~IniSection();
    IniSection(const IniSection&) = delete;
    IniSection& operator=(const IniSection&) = delete;
};

/// The name by which a list finds an entry.
inline const char* nameOf(const IniEntry& entry) noexcept {
    return entry.key;
}

/// The name by which a list finds a section.
inline const char* nameOf(const IniSection& section) noexcept {
    return section.name;
}

/// A configuration file in memory. The options may be changed at any time and take effect with the next
/// operation. A pointer to a section or entry is valid until that is deleted, a text until its entry is
/// changed, and all until the document is read again or freed.
struct IniDocument {
    IniList<IniSection> sections; ///< in the order of the file; new ones at the end
    /// The section found last, tried first by the next search, so that among sections of one name the one in
    /// use stays in use. Null after its deletion.
    IniSection* currentSection = nullptr;

    /// 1: a repeated header continues its section, a repeated key replaces the value. 0: both are kept apart.
    int mergeDuplicates = 1;
    int caseSensitive = 0;           ///< how names compare, see compareIniNames
    std::int32_t lastKeyLine = -1;   ///< line of the entry that getIniUInt found or the parser replaced last
    std::int32_t maxLineLength = 80; ///< longest entry line written whole, in bytes; -1: no limit
    std::int32_t splitChar = 0;      ///< split long values after this character where possible; 0: anywhere
    std::int32_t writeFlags = IniSafeSave | IniTempByPattern | IniSpacedEquals;
    std::int32_t parseFlags = IniStripDoubleQuotes;
    std::int32_t firstBadLine = -1; ///< first line that the parser could not use, from 1; -1: none
    IniString path;                 ///< the file last loaded or saved; null: none
    FILETIME lastWriteTime = {};    ///< of that file at that moment

    IniBlocks text; ///< what was read from the file; sections and entries point into it
    IniPool<IniSection> sectionPool;
    IniPool<IniEntry> entryPool;

    IniDocument() noexcept = default;
    ~IniDocument();
    IniDocument(const IniDocument&) = delete;
    IniDocument& operator=(const IniDocument&) = delete;
};

/// A new empty document, or null when memory is short. Its owner ends it with freeIniDocument.
IniDocument* createIniDocument() noexcept;

/// Frees a document with all its sections and entries. Null is allowed.
void freeIniDocument(IniDocument* document) noexcept;

/// Removes and frees every section; options, path and line numbers stay.
void clearIniSections(IniDocument* document) noexcept;

/// Frees a section that is in no list, with its entries.
void freeIniSection(IniDocument* document, IniSection* section) noexcept;

/// What a directory search reports about a file.
struct IniFileFacts {
    FILETIME lastWriteTime = {};
    std::size_t size = 0;
};

/// Searches the directory for a file or folder. False, with `facts` unchanged, when it finds none; the
/// system's last error then says why. `facts` may be null.
bool findFile(const char* path, IniFileFacts* facts) noexcept;

} // namespace vyini

#endif
