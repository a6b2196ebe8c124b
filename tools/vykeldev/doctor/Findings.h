#ifndef VYKELDEV_DOCTOR_FINDINGS_H
#define VYKELDEV_DOCTOR_FINDINGS_H

#include <string>
#include <vector>

namespace vykeldev::doctor {

enum class Severity { Info, Warning, Error };

/// Everything that the doctor can find, in the order of the table in Findings.cpp.
enum class FindingId {
    LibraryMissing,
    LibraryVersion,
    PluginsKeyMissing,
    PluginsKeyDenied,
    PluginsNone,
    ValueMissing,
    ValueType,
    ValueUnterminated,
    PathEmpty,
    PathRelative,
    PathDuplicate,
    FileMissing,
    FileUnreadable,
    FileNotALibrary,
    ArchitectureWrong,
    DependencyMissing,
    LoadRefused,
    EntryPointMissing,
    ProbeImpossible,
    PluginRefused,
    ListMissing,
    RefreshFailed,
    DeviceRefused,
    PluginThrew,
    PluginCrashed,
    PluginExited,
    PluginHung,
    NumberDuplicate,
    NumberMissing,
    FolderUnknown,
    FolderMissing,
    FolderReadOnly,
    LockUnusable,
    LockHeld,
    LegacyUnreadable,
    LegacyEncoding,
    LegacyNotWritable,
    LegacyMalformed,
    LegacyLineIgnored,
    LegacyOtherLayout,
    LegacyResourceName,
    LegacyNotLocal,
    LegacyBehindGap,
    LegacyDuplicate,
    Count
};

/// What never changes about a finding. `name` is its stable identifier: scripts and documents rely on it.
struct FindingKind {
    FindingId id;
    const char* name;
    Severity severity;
    const char* meaning;
    const char* remedy;
};

const FindingKind& kindOf(FindingId id) noexcept;
const char* nameOf(Severity severity) noexcept;

/// One thing found on this machine. Texts are UTF-8 and may hold anything.
struct Finding {
    FindingId id;
    std::string subject; ///< the plug-in, file, folder or number that it is about
    std::string detail;  ///< what was seen; may be empty
    int line = 0;        ///< in the file `subject`, from 1; 0: it is about no line
};

using Findings = std::vector<Finding>;

} // namespace vykeldev::doctor

#endif
