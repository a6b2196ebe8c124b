#ifndef INI_INIPARSER_H
#define INI_INIPARSER_H

#include "ini/IniDocument.h"
#include "ini/IniLineReader.h"
#include <cstdint>

namespace vyini {

/// Receives every line that the parser skips, without the blanks around it: the lines that it cannot use,
/// blank ones included, and entries before the first section. It must not throw. Only tools use one.
struct IniSkippedLineObserver {
    void (*onSkipped)(void* context, IniRange line, std::int32_t number);
    void* context;
};

/// Replaces the document's sections by what it reads, as the document's options say. Returns 0, IniReadFailed
/// or IniMemoryFull. After a failure the document holds what was read so far, and continuation entries may be
/// unjoined. The document takes the reader's text.
///
/// Blanks at both ends of a line, name, key or value do not count. `[name]` begins a section; text after the
/// bracket is ignored. `key = value` is an entry. A line that begins with ";" is a comment and is dropped.
/// Any other line, blank ones included, is skipped, and the first such line is kept in firstBadLine. Entries
/// before the first section are dropped without IniColonSeparator. Escapes in values stay as they are.
///
/// Consecutive entries `<key> Line0001`, `<key> Line0002`, ... are one entry whose value was split: they are
/// joined under `<key>`. A run begins at number 1; the continuation entries after it belong to it, whatever
/// their key and number, up to the next number 1.
int parseIni(IniDocument* document, IniLineReader* reader,
             const IniSkippedLineObserver* observer = nullptr) noexcept;

/// For a key that ends in " Line" and a decimal number of 32 bits: the place of " Line", with the number in
/// `number`. Otherwise null.
const char* findContinuation(const char* key, std::uint32_t& number) noexcept;

} // namespace vyini

#endif
