#ifndef INI_INISAVE_H
#define INI_INISAVE_H

#include "ini/IniDocument.h"
#include <cstdint>

namespace vyini {

/// Writes the document to a file, as its options say, and keeps its path and last-write time. `path` is
/// narrow, as the system's file functions take it.
///
/// With IniSafeSave the target is replaced in one step by a temporary file in its folder, after that was
/// written, flushed and closed without a failure: whatever happens, the target is the old file or the new
/// one. The temporary file's name is fixed unless IniTempByPattern is set: others must be kept from saving to
/// the same target at the same time. After a failure there is no temporary file. Without IniSafeSave the
/// target is truncated first, and deleted after a failure.
///
/// 0; IniNoFile a null or empty path; IniTargetRefused the target cannot be opened for writing, or not be
/// replaced; IniTempFailed, IniTempNamesTaken, IniCreateFailed; IniKeyTooLong; IniWriteFailed; IniMemoryFull.
/// After a failure path and time are the former ones.
int saveIniFile(IniDocument* document, const char* path) noexcept;

/// The name of the temporary file beside a target: its extension, when it has a folder and another extension
/// than "TMP", becomes "TMP"; otherwise ".TMP" is appended. Null when memory is short.
IniString nameTempByExtension(const char* target) noexcept;

/// The n-th temporary name of the pattern, in the target's folder. Null when memory is short.
IniString nameTempByPattern(const char* target, std::uint32_t n) noexcept;

} // namespace vyini

#endif
