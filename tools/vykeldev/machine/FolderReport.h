#ifndef VYKELDEV_MACHINE_FOLDERREPORT_H
#define VYKELDEV_MACHINE_FOLDERREPORT_H

#include "machine/Finding.h"
#include "machine/LegacyFile.h"
#include "output/Json.h"
#include <optional>
#include <string>
#include <vector>

/// What a look at the folder of the lock files shows, as plain data. Texts are UTF-8 but come from the
/// machine and may hold anything.
namespace vykeldev {

/// One lock file, after the attempt to lock it.
struct LockState {
    std::string path;
    const char* state = "free"; ///< Or "held" or "unusable".
    double secondsWaited = 0;

    static constexpr std::tuple members{member("path", &LockState::path), member("state", &LockState::state),
                                        member("secondsWaited", &LockState::secondsWaited)};
};

inline void to_json(Json& json, const LegacyLine& line) {
    json = {{"line", line.number}, {"text", line.text}};
}

/// The legacy alias file.
struct LegacyState {
    std::string path;
    /// "none", "read", "unreadable", or "not read": its lock was not free, or it is a link.
    std::string state = "none";
    std::optional<std::string> layout;  ///< "resource names" or "tokens"; none when it was not read.
    std::vector<LegacyLine> aliasLines; ///< Of aliasLinesOf, when it was read.

    static constexpr std::tuple members{
        member("path", &LegacyState::path), member("state", &LegacyState::state),
        member("layout", &LegacyState::layout), member("aliasLines", &LegacyState::aliasLines)};
};

/// The folder and what is in it.
struct FolderReport {
    std::string folder; ///< Empty when the system does not report it.
    std::vector<LockState> locks;
    LegacyState legacy;
    Findings findings;
};

} // namespace vykeldev

#endif
