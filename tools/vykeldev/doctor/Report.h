#ifndef VYKELDEV_DOCTOR_REPORT_H
#define VYKELDEV_DOCTOR_REPORT_H

#include "machine/FolderReport.h"
#include "machine/PluginFile.h"
#include "machine/Registrations.h"
#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the doctor sees, as plain data. Texts are UTF-8 but come from the machine and may hold anything. The
/// names of the enumerators are part of the reports.
namespace vykeldev::doctor {

/// What became of a plug-in: refused is what it reported itself, before it had a list.
enum class PluginOutcome { Loaded, Refused, Failed };
constexpr const char* outcomeNames[] = {"loaded", "refused", "failed"};
constexpr const char* nameOf(PluginOutcome outcome) noexcept {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

/// One registered plug-in.
struct PluginAccount : Registration {  ///< Its error is that of any step.
    std::uint32_t valueType = REG_SZ;  ///< Also when nobody can say.
    std::optional<LibraryImage> image; ///< What its file's headers say; none when they were not read.
    PluginOutcome outcome = PluginOutcome::Failed;
    std::optional<Step> failedStep; ///< None when it loaded.
    std::string detail;             ///< What happened, for people.
    std::int64_t milliseconds = 0;
    Json devices =
        Json::array(); ///< Token, number and alias of each; of many, texts only when the user wants them.
};

using vykeldev::to_json; // of the types with members

/// Which releases are at work here.
struct Versions {
    std::string tool;
    std::string libraryPath;
    std::optional<std::string> library; ///< None when it has none or does not exist.
    std::string system;

    static constexpr std::tuple members{
        member("tool", &Versions::tool), member("libraryPath", &Versions::libraryPath),
        member("library", &Versions::library), member("system", &Versions::system)};
};

/// All that the doctor saw.
struct Report : FolderReport {
    bool listsDevices = false; ///< The user wants to see them.
    Versions versions;
    std::vector<PluginAccount> plugins; ///< In the registry's order.

    std::size_t count(PluginOutcome outcome) const {
        return static_cast<std::size_t>(std::count_if(
            plugins.begin(), plugins.end(), [=](const auto& plugin) { return plugin.outcome == outcome; }));
    }
    std::size_t count(Severity severity) const {
        return static_cast<std::size_t>(std::count_if(
            findings.begin(), findings.end(), [=](const auto& it) { return it.kind->severity == severity; }));
    }
};

} // namespace vykeldev::doctor

#endif
