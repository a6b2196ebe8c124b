#ifndef VYKELDEV_DOCTOR_EXAMINATION_H
#define VYKELDEV_DOCTOR_EXAMINATION_H

#include "machine/PluginFile.h"
#include "machine/Registrations.h"
#include "output/Command.h"
#include <chrono>

/// Texts come from the machine and may hold anything.
namespace vykeldev::doctor {

/// What the user asks for.
struct DoctorOptions : CommonOptions {
    std::string name;     ///< Of the only plug-in to look at; empty: all.
    bool devices = false; ///< Lists all devices, with their texts.
    double timeout = 10;  ///< Seconds for each plug-in.
};

/// One registered plug-in.
struct PluginAccount : Registration {       ///< Its error is that of any step.
    std::uint32_t valueType = REG_SZ;       ///< Also when nobody can say.
    std::optional<LibraryImage> image = {}; ///< What its file's headers say; none when they were not read.
    std::optional<Obstacle> obstacle = {};  ///< None when it loaded.
    bool isRepeated = false;                ///< An earlier plug-in has the same file.
    std::int64_t milliseconds = 0;
    /// Token, number and alias of each; of many, texts only when the user wants them.
    Json devices = Json::array();
};

/// Examines a plug-in whose name and path are known: looks at its file, then probes it. Completes the
/// account, and adds a finding for everything that is wrong. Throws Stopped.
void examine(PluginAccount& plugin, const DoctorOptions& options, Findings& findings);

} // namespace vykeldev::doctor

#endif
