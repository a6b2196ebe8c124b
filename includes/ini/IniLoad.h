#ifndef INI_INILOAD_H
#define INI_INILOAD_H

#include "ini/IniParser.h"

namespace vyini {

/// Replaces the document's sections by the file's (see parseIni), and keeps its path and last-write time.
/// `path` is narrow, as the system's file functions take it. A byte-order mark of UTF-8 is skipped. Nothing
/// is written. `observer` may be null.
///
/// Returns 0; IniNoFile: the file does not exist; IniOpenFailed: it exists but cannot be opened; IniWideText:
/// it is UTF-16 or UTF-32; IniSeekFailed, IniReadFailed, IniMemoryFull. A failure leaves path and time as
/// they were; the sections are the former ones, or those read before the failure.
int loadIniFile(IniDocument* document, const char* path,
                const IniSkippedLineObserver* observer = nullptr) noexcept;

} // namespace vyini

#endif
