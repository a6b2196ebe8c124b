#ifndef INI_INIPARSER_H
#define INI_INIPARSER_H

#include "ini/IniDocument.h"
#include "ini/IniLineReader.h"
#include <cstdint>

namespace vyini {

/// Receives every line that the parser skips, without blanks around it: those that it cannot use, blank ones
/// included, and entries before the first section. It must not throw. Only tools use one.
struct IniSkippedLineObserver {
    void (*onSkipped)(void* context, IniRange line, std::int32_t number);
    void* context;
};

/// Replaces the document's sections by what is read, as the document's options say: 0,
/// IniReadFailed or IniMemoryFull, after which the document holds what was read so far, its continuation
/// entries perhaps not joined. The document takes the reader's text.
///
/// Blanks at both ends of a line, name, key or value don't count. `[name]` begins a section; text after the
/// bracket is ignored. `key = value` is an entry. A line that begins with ";" is a comment and is dropped.
/// Any other line, blank ones included, is skipped, and the first such line is kept in firstBadLine. Entries
/// before the first section are dropped without IniColonSeparator. Escapes in values stay as they are.
///
/// Consecutive entries `<key> Line0001`, `<key> Line0002`, ... are one entry whose value was split: they are
/// joined under the key of the first. A run begins at number 1 and takes in what follows with other numbers.
int parseIni(IniDocument* document, IniLineReader* reader,
             const IniSkippedLineObserver* observer = nullptr) noexcept;

/// The text " Line" in a key that ends in it and a decimal number of 32 bits, which is stored in `number`;
/// otherwise null.
const char* findContinuation(const char* key, std::uint32_t& number) noexcept;

} // namespace vyini

#endif
