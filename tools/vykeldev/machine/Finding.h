#ifndef VYKELDEV_MACHINE_FINDING_H
#define VYKELDEV_MACHINE_FINDING_H

#include "output/Severity.h"
#include "system/ToolCommand.h"
#include <cstddef>
#include <string>
#include <vector>

namespace vykeldev {

/// What never changes about a finding. docs/findings.md defines them all; the build makes machine/Findings.h
/// of it.
struct FindingKind {
    const char* id; ///< Scripts and documents rely on it.
    /// An error makes plug-ins, devices or whole lists missing; a warning may soon, or hurts otherwise; an
    /// info helps only to understand the rest.
    Severity severity;
    const char* meaning;
    /// The plug-in's name stands between each two parts; after the last one come nulls.
    const char* remedy[3];

    /// The remedy, with the name of the plug-in `subject`. It has NAME instead when that is no plain name.
    std::string remedyFor(const std::string& subject) const;
};

/// One thing found on this machine. Texts are UTF-8 and may hold anything.
struct Finding {
    const FindingKind* kind;
    std::string subject;     ///< The plug-in, file, folder or number that it is about.
    std::string detail;      ///< What was seen; may be empty.
    int line = 0;            ///< In the file `subject`, from 1; 0: it is about no line.
    std::string remedy = {}; ///< What helps here, when that is less than the kind's remedy; or empty.

    /// What helps here.
    std::string whatToDo() const { return typeable(remedy.empty() ? kind->remedyFor(subject) : remedy); }
};

using Findings = std::vector<Finding>;

} // namespace vykeldev

#endif
