#ifndef INI_INIWRITER_H
#define INI_INIWRITER_H

#include "ini/IniDocument.h"
#include <cstdint>
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

/// Writes the document to a file, as its options say, and keeps its path and last-write time. `path` is
/// narrow, as the system's file functions take it.
///
/// With IniSafeSave, a temporary file in the target's folder is written, flushed and closed, and then
/// replaces the target in one step. So whatever happens, the target is the old file or the new one. Without
/// IniTempByPattern the temporary file has always the same name: the caller must see to it that nobody else
/// saves to the same target at the same time. After a failure there is no temporary file. Without IniSafeSave
/// the target is truncated first, and deleted after a failure.
///
/// Returns 0; IniNoFile: the path is null or empty; IniTargetRefused: the target cannot be opened for writing
/// or cannot be replaced; IniTempFailed, IniTempNamesTaken, IniCreateFailed; IniKeyTooLong; IniWriteFailed;
/// IniMemoryFull. A failure leaves path and time as they were.
int saveIniFile(IniDocument* document, const char* path) noexcept;

/// The name of the temporary file beside a target. When the target has a folder and an extension other than
/// "TMP", "TMP" replaces the extension; otherwise ".TMP" is appended. Null when memory is short.
IniString nameTempByExtension(const char* target) noexcept;

/// The n-th temporary name of the pattern, in the target's folder. Null when memory is short.
IniString nameTempByPattern(const char* target, std::uint32_t n) noexcept;

} // namespace vyini

#endif
