#ifndef VYKELDEV_DOCTOR_REPORT_H
#define VYKELDEV_DOCTOR_REPORT_H

#include "doctor/Finding.h"
#include "doctor/LibraryImage.h"
#include "support/LibraryError.h"
#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

/// What the doctor sees, as plain data. Texts are UTF-8 but come from the machine and may hold anything.
namespace vykeldev::doctor {

/// The way of a plug-in from its registration to its devices and back. The names are part of the report.
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
const char* nameOf(Step step) noexcept;
std::optional<Step> stepOf(const std::string& name) noexcept;

enum class Outcome { Loaded, Refused, Failed };
const char* nameOf(Outcome outcome) noexcept;

/// One registered plug-in, in the registry's order.
struct PluginAccount {
    std::string name;
    std::optional<std::string> path; ///< none when the registry does not give it
    std::uint32_t valueType = 0;
    std::size_t valueBytes = 0;
    std::optional<LibraryImage> image; ///< what its file's headers tell; none when it was not read
    Outcome outcome = Outcome::Failed;
    std::optional<Step> failedStep; ///< none when it loaded
    std::string detail;             ///< what happened, for people
    std::optional<LibraryError> error;
    std::int64_t milliseconds = 0;
    std::vector<std::optional<std::uint32_t>> deviceNumbers; ///< one per device; none: not numbered
};

struct LockState {
    enum class State { Free, Held, Unusable };
    std::string path;
    State state = State::Free;
    double secondsWaited = 0;
};
const char* nameOf(LockState::State state) noexcept;

struct LegacyState {
    std::string path;
    std::string state = "none"; ///< "none", "read", "unreadable", or "not read" for want of its lock
    std::string layout;         ///< "resource names" or "tokens"; empty when it was not read
    std::optional<std::string> bytes;
};

struct Versions {
    std::string tool;
    std::string libraryPath;
    std::string library; ///< empty when it has none or is not there
    std::string system;
};

struct Report {
    Versions versions;
    std::vector<PluginAccount> plugins;
    std::string folder; ///< of the lock files; empty when the system does not tell
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

Json toJson(const Report& report);
Json toJson(const Versions& versions);
Json toJson(const std::vector<LockState>& locks);
/// The registrations alone, as they stand in the registry.
Json registrationsToJson(const Report& report);

/// For people; in colour when told so.
void printReport(std::ostream& out, const Report& report, bool colour);

} // namespace vykeldev::doctor

#endif
