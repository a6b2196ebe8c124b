#ifndef VYKELDEV_ALIASES_LEGACYFILE_H
#define VYKELDEV_ALIASES_LEGACYFILE_H

#include "AliasRecords.h"
#include "pellumkelddk/user/AutoIniText.h"
#include "vykel/IDevice.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vykeldev::aliases {

/// Why an entry of the legacy file is not handed over, as far as the file itself tells.
enum class Flaw {
    None,
    Malformed,    ///< It makes the whole transfer fail.
    OtherLayout,  ///< The file's version asks for entries of the other layout.
    BehindGap,    ///< Its section's number is not reached.
    ResourceName, ///< No device is ever called that.
    NotLocal,     ///< It is about a device of another machine.
    Duplicate     ///< Another entry for the same device comes first.
};

/// One entry of the legacy file.
struct LegacyEntry {
    std::optional<std::string> alias;
    std::optional<std::string> target; ///< A resource name, or a persistent token.
    std::int32_t line = 0;             ///< Where it stands; of a malformed one, where to mend it.
    Flaw flaw = Flaw::None;
    std::string detail;                ///< About the flaw, for people.
    std::optional<std::size_t> record; ///< The number of its section, when a transfer reads that.
};

/// A line that counts for nothing.
struct SkippedLine {
    std::int32_t number = 0;
    std::string text;
};

/// The legacy alias file, as a transfer reads it. To be read while no transfer runs: an open file is in the
/// way of one.
class LegacyFile {
public:
    /// Reads the file. Throws vyerr::Exception when memory is short.
    explicit LegacyFile(const std::string& path);

    /// The result of vyini::loadIniFile: 0, or why there is nothing in here.
    int result() const noexcept { return loadResult; }
    vyini::IniDocument& document() const noexcept { return *text.document(); }
    /// But for blank ones.
    const std::vector<SkippedLine>& skippedLines() const noexcept { return skipped; }
    vykel::AliasLayout layout() const;
    /// In the order of their lines. Throws std::bad_alloc.
    std::vector<LegacyEntry> entries() const;

private:
    static void keepSkipped(void* file, vyini::IniRange line, std::int32_t number);

    vykel::AutoIniText text;
    std::vector<SkippedLine> skipped;
    int loadResult;
};

} // namespace vykeldev::aliases

#endif
