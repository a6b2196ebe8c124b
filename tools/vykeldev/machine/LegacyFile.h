#ifndef VYKELDEV_MACHINE_LEGACYFILE_H
#define VYKELDEV_MACHINE_LEGACYFILE_H

#include "AliasRecords.h"
#include "machine/Finding.h"
#include "pellumkelddk/user/AutoIniText.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vykeldev {

/// One entry of the legacy file.
struct LegacyEntry {
    std::optional<std::string> alias = {};
    std::optional<std::string> target = {}; ///< A resource name, or a persistent token.
    std::int32_t line = 0;                  ///< In the file; of a malformed one, where to correct it.
    /// Why it is not handed over, as far as the file itself shows, or null. finding::legacyMalformed makes
    /// the whole transfer fail.
    const FindingKind* flaw = nullptr;
    std::string detail = {}; ///< Describes the flaw for people.
};

/// A line of the legacy file, without its end.
struct LegacyLine {
    std::int32_t number = 0; ///< From 1.
    std::string text;
};

/// The legacy alias file, as a transfer reads it. Read it under the transfers' lock: an open file would make
/// the save of a transfer fail.
class LegacyFile {
public:
    /// Reads the file. Throws vyerr::Exception when memory is short.
    explicit LegacyFile(const std::string& path);

    /// Owned by this object.
    vyini::IniDocument& document() const noexcept { return *text.document(); }
    /// Throws std::bad_alloc.
    vykel::AliasLayout layout() const { return vykel::aliasLayoutOf(text.document()); }
    /// In the order of their lines. Throws std::bad_alloc.
    std::vector<LegacyEntry> entries() const;

    int result = 0; ///< Of vyini::loadIniFile: 0, or why the file was not read.
    /// Those that have no meaning, in the order of the file; blank lines are not among them.
    std::vector<LegacyLine> skippedLines;

private:
    vykel::AutoIniText text;
};

/// Those lines of the file at `path` that are not blank and are about aliases: in the sections General,
/// Aliases and Alias<number>.
std::vector<LegacyLine> aliasLinesOf(const std::string& path);

} // namespace vykeldev

#endif
