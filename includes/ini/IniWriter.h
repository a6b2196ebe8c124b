#ifndef INI_INIWRITER_H
#define INI_INIWRITER_H

#include "ini/IniDocument.h"
#include <cstdio>

namespace vyini {

/// Writes the document's text to an open file, as its options say. Returns 0, IniKeyTooLong or
/// IniWriteFailed. The stream is borrowed and not flushed.
///
/// Lines end in CR LF. A line feed within a text is written as CR LF too, so a value that holds one must be
/// escaped to be read back. An entry whose line would be longer than maxLineLength is split into continuation
/// entries, which the parser joins again, unless the key itself contains " Line". Where a value is split,
/// blanks and quotes survive only when the entry has quotes.
int writeIni(const IniDocument* document, std::FILE* file) noexcept;

} // namespace vyini

#endif
