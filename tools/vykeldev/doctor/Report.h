#ifndef VYKELDEV_DOCTOR_REPORT_H
#define VYKELDEV_DOCTOR_REPORT_H

#include "machine/Finding.h"
#include "machine/LibraryError.h"
#include "machine/LibraryImage.h"
#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// What the doctor sees, as plain data. Texts are UTF-8 but come from the machine and may hold anything. The
/// names of the enumerators are part of the reports.
namespace vykeldev::doctor {

/// The steps of a plug-in from its registration to its devices and back.
enum class Step {
    RegistryValue,
    Path,
    File,
    Architecture,
    Dependency,
    Load,
    EntryPoint,
    Initialise,
    List,
    Refresh,
    Unload
};
constexpr const char* stepNames[] = {"registry value", "path",    "file",        "architecture",
                                     "dependency",     "load",    "entry point", "initialise",
                                     "list",           "refresh", "unload"};
constexpr const char* nameOf(Step step) noexcept {
    return stepNames[static_cast<std::size_t>(step)];
}

/// What became of a plug-in: refused is what it reported itself, before it had a list.
enum class Outcome { Loaded, Refused, Failed };
constexpr const char* outcomeNames[] = {"loaded", "refused", "failed"};
constexpr const char* nameOf(Outcome outcome) noexcept {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

/// One registered plug-in.
struct PluginAccount {
    std::string name;
    std::optional<std::string> path; ///< None when the registry does not give it.
    std::uint32_t valueType = 0;
    std::optional<LibraryImage> image; ///< What its file's headers say; none when they were not read.
    Outcome outcome = Outcome::Failed;
    std::optional<Step> failedStep; ///< None when it loaded.
    std::string detail;             ///< What happened, for people.
    std::optional<LibraryError> error;
    std::int64_t milliseconds = 0;
    std::vector<std::optional<std::uint32_t>> deviceNumbers; ///< One per device; none: it has no number.
    Json deviceList; ///< Token, number and alias of each device, as in the schema; null when nobody asked.
};

/// One lock file, after the attempt to lock it.
struct LockState {
    std::string path;
    const char* state = "free"; ///< Or "held" or "unusable".
    double secondsWaited = 0;
};

/// A line of the legacy alias file.
struct LegacyLine {
    int number; ///< From 1.
    std::string text;
};

/// The legacy alias file.
struct LegacyState {
    std::string path;
    /// "none", "read", "unreadable", or "not read": its lock was not free, or it is a link.
    std::string state = "none";
    std::string layout; ///< "resource names" or "tokens"; empty when it was not read.
    std::vector<LegacyLine> aliasLines;
};

/// Which releases are at work here.
struct Versions {
    std::string tool;
    std::string libraryPath;
    std::string library; ///< Empty when it has none or does not exist.
    std::string system;
};

/// All that the doctor saw.
struct Report {
    bool listsDevices = false; ///< The user wants to see them.
    Versions versions;
    std::vector<PluginAccount> plugins; ///< In the registry's order.
    std::string folder;                 ///< Of the lock files; empty when the system does not report it.
    std::vector<LockState> locks;
    LegacyState legacy;
    Findings findings;

    std::size_t count(Outcome outcome) const {
        return static_cast<std::size_t>(std::count_if(
            plugins.begin(), plugins.end(), [=](const auto& plugin) { return plugin.outcome == outcome; }));
    }
    std::size_t count(Severity severity) const {
        return static_cast<std::size_t>(std::count_if(
            findings.begin(), findings.end(), [=](const auto& it) { return it.kind->severity == severity; }));
    }
};

void to_json(Json& json, const Report& report);

/// For people; in colour when told so.
void printReport(std::ostream& out, const Report& report, bool colour);

} // namespace vykeldev::doctor

#endif
