#include "doctor/Findings.h"

#include <cstddef>
#include <iterator>

namespace vykeldev::doctor {
namespace {

// docs/troubleshooting.md lists the same identifiers and remedies; a test compares them.
constexpr FindingKind kinds[] = {
    {FindingId::LibraryMissing, "library-missing", Severity::Error,
     "The library vykeldevenum is not there, cannot be loaded or is another one, so nothing lists devices "
     "with it.",
     "Install tool and library again, from one release and into one folder, or give the library's path with "
     "--library."},
    {FindingId::LibraryVersion, "library-version", Severity::Warning,
     "Tool and library are from different releases, so clients may see something else than the doctor.",
     "Install both from one release, or give the path of the right library with --library."},
    {FindingId::PluginsKeyMissing, "plugins-key-missing", Severity::Error,
     "The registry key of the plug-ins is missing, so no client can initialise the library.",
     "Register a plug-in with 'vykeldev register NAME PATH' as administrator; that makes the key."},
    {FindingId::PluginsKeyDenied, "plugins-key-denied", Severity::Error,
     "This user may not read the registry key of the plug-ins, so no client of this user can initialise the "
     "library.",
     "Let the users of the devices read the key and its subkeys."},
    {FindingId::PluginsNone, "plugins-none", Severity::Warning,
     "No plug-in is registered, so every list of devices is empty.",
     "Install the driver of your device, or register its plug-in with 'vykeldev register NAME PATH'."},
    {FindingId::ValueMissing, "value-missing", Severity::Error,
     "The plug-in's registry key holds no readable value EnumeratorPluginPath.",
     "Register the plug-in again with 'vykeldev register NAME PATH', or remove it with 'vykeldev unregister "
     "NAME'."},
    {FindingId::ValueType, "value-type", Severity::Warning,
     "The value EnumeratorPluginPath is no plain text (REG_SZ). Its bytes are taken as they are: nothing "
     "like "
     "%ProgramFiles% in it is replaced.",
     "Register the plug-in again with 'vykeldev register NAME PATH'."},
    {FindingId::ValueUnterminated, "value-unterminated", Severity::Info,
     "The value EnumeratorPluginPath is stored without its terminating zero. The library copes; other "
     "programs "
     "may not.",
     "Register the plug-in again with 'vykeldev register NAME PATH'."},
    {FindingId::PathEmpty, "path-empty", Severity::Error, "The registered path is empty or names a folder.",
     "Register the plug-in again with the path of its DLL: 'vykeldev register NAME PATH'."},
    {FindingId::PathRelative, "path-relative", Severity::Warning,
     "The registered path is relative, so which file it means depends on the client program.",
     "Register the plug-in again with its whole path: 'vykeldev register NAME PATH'."},
    {FindingId::PathDuplicate, "path-duplicate", Severity::Warning,
     "The same file is registered more than once: it is initialised once for each, and its devices appear "
     "repeatedly.",
     "Remove all but one of the registrations with 'vykeldev unregister NAME'."},
    {FindingId::FileMissing, "file-missing", Severity::Error, "The registered file is not there.",
     "Install the plug-in again, or remove its registration with 'vykeldev unregister NAME'."},
    {FindingId::FileUnreadable, "file-unreadable", Severity::Error,
     "The registered file is there but cannot be read.",
     "Give the users of the device the right to read and execute the file and its folder."},
    {FindingId::FileNotALibrary, "file-not-a-library", Severity::Error,
     "The registered file is no library, or it is damaged.",
     "Install the plug-in again, or register the right file with 'vykeldev register NAME PATH'."},
    {FindingId::ArchitectureWrong, "architecture-wrong", Severity::Error,
     "The registered library is made for another kind of processor or process.",
     "Install the plug-in's 64-bit (x86-64) version."},
    {FindingId::DependencyMissing, "dependency-missing", Severity::Error,
     "The plug-in needs a library, or a function of one, that the system does not find. It looks beside the "
     "client program, in the system's folders and along PATH, but not beside the plug-in.",
     "Install what is missing (often a runtime of the plug-in's compiler), or ask the plug-in's maker for a "
     "version that brings it along."},
    {FindingId::LoadRefused, "load-refused", Severity::Error,
     "The system does not load the library, though it seems to be in order.",
     "Look at the system's text; often the library's own start-up code failed. Report it to the plug-in's "
     "maker."},
    {FindingId::EntryPointMissing, "entry-point-missing", Severity::Error,
     "The library does not export all three entry points, so it is no plug-in of this family or an "
     "unfinished "
     "one.",
     "Register the right file; authors: export vykel_initializePlugin, vykel_getPluginInterface and "
     "vykel_finalizePlugin undecorated."},
    {FindingId::ProbeImpossible, "probe-impossible", Severity::Warning,
     "The tool could not start the process in which it tries the plug-in; nothing is known about the "
     "plug-in.",
     "End other programs and try again, and see that this user may start processes here."},
    {FindingId::PluginRefused, "plugin-refused", Severity::Warning,
     "The plug-in itself answered that it cannot be used now.",
     "Look the code up in the plug-in's documentation; often its driver or service is not installed or not "
     "running."},
    {FindingId::ListMissing, "list-missing", Severity::Error,
     "The plug-in reported success but handed out no list.", "Report it to the plug-in's maker."},
    {FindingId::RefreshFailed, "refresh-failed", Severity::Error,
     "The plug-in cannot bring its list of devices up to date; its devices are left out.",
     "Look the code up in the plug-in's documentation."},
    {FindingId::DeviceRefused, "device-refused", Severity::Error,
     "The plug-in's list counts a device that it does not hand out. That one and all later devices of the "
     "list are left out; the earlier ones stay.",
     "Look the code up in the plug-in's documentation, and report it to the plug-in's maker."},
    {FindingId::PluginThrew, "plugin-threw", Severity::Error,
     "The plug-in let an exception out, which its contract forbids. At the step refresh it makes every "
     "client's refresh fail, for all plug-ins.",
     "Remove it with 'vykeldev unregister NAME' until its maker has mended it."},
    {FindingId::PluginCrashed, "plugin-crashed", Severity::Error,
     "The plug-in crashed its process, as it would crash every client.",
     "Remove it with 'vykeldev unregister NAME' until its maker has mended it."},
    {FindingId::PluginExited, "plugin-exited", Severity::Error,
     "The plug-in ended its process, as it would end every client.",
     "Remove it with 'vykeldev unregister NAME' until its maker has mended it."},
    {FindingId::PluginHung, "plugin-hung", Severity::Error,
     "The plug-in did not return in time, so every client would wait for it.",
     "Try again with a larger --timeout; if it stays, remove the plug-in with 'vykeldev unregister NAME' and "
     "report it to its maker."},
    {FindingId::NumberDuplicate, "number-duplicate", Severity::Error,
     "Several devices have the same number, so clients and legacy aliases cannot tell them apart.",
     "Look for plug-ins that report the same device or were copied with their stored numbers; let the "
     "plug-in "
     "forget the number of one of the devices."},
    {FindingId::NumberMissing, "number-missing", Severity::Info,
     "Devices have no number yet. They get one when a client next refreshes its list.",
     "Run 'vykeldev list'. If the numbers do not stay, the plug-in cannot store them: see its "
     "documentation."},
    {FindingId::FolderUnknown, "folder-unknown", Severity::Error,
     "The system does not tell its folder for data common to all users, so no client gets a list.",
     "Check that the folder (usually ProgramData on drive C) exists and that the registry names it rightly."},
    {FindingId::FolderMissing, "folder-missing", Severity::Error,
     "The folder of the lock files is missing, so every refresh fails.",
     "Make the folder as administrator and let the users of the devices write there."},
    {FindingId::FolderReadOnly, "folder-read-only", Severity::Info,
     "This user may not make files in the folder. That matters only while a lock file is missing or "
     "vykel.ini "
     "holds aliases, and is then told as lock-unusable or legacy-not-writable.",
     "Nothing, or let the users of the devices write in the folder."},
    {FindingId::LockUnusable, "lock-unusable", Severity::Error,
     "A lock file can be neither opened nor made, or the system refuses to lock it, so every refresh fails.",
     "Let the users of the devices read and write the file and its folder; the folder must lie on a local "
     "disk."},
    {FindingId::LockHeld, "lock-held", Severity::Warning,
     "Another process has held the lock all the time that was waited, so every refresh waits.",
     "Look for a client that hangs in a refresh and end it; the system then frees the lock. Do not delete "
     "the "
     "lock file."},
    {FindingId::LegacyUnreadable, "legacy-unreadable", Severity::Warning,
     "The legacy alias file is there but cannot be read, so its aliases are not handed over.",
     "Close the program that holds the file open, and let the users of the devices read it."},
    {FindingId::LegacyEncoding, "legacy-encoding", Severity::Warning,
     "The legacy alias file is in UTF-16 or UTF-32, so that none of its aliases is handed over.",
     "Save the file in UTF-8, or delete it when its aliases are no longer wanted."},
    {FindingId::LegacyNotWritable, "legacy-not-writable", Severity::Error,
     "The legacy alias file cannot be replaced, so every refresh that finds a device for one of its entries "
     "fails with -50209.",
     "Let the users of the devices write the file and its folder, and remove what is in the way; or delete "
     "the file when its aliases are no longer wanted."},
    {FindingId::LegacyMalformed, "legacy-malformed", Severity::Error,
     "The legacy alias file holds a malformed alias section, so every refresh fails.",
     "Mend the section that is named: it needs Alias, PersistentToken, and Local=True or Local=False. Or "
     "delete it, and number those behind it anew: a gap ends the reading."},
    {FindingId::LegacyLineIgnored, "legacy-line-ignored", Severity::Warning,
     "A line of the legacy alias file is neither a section, an entry with a value nor a comment, or it "
     "stands "
     "before the first section; it is ignored.",
     "Mend the line, or delete it."},
    {FindingId::LegacyOtherLayout, "legacy-other-layout", Severity::Warning,
     "An entry belongs to another layout than MajorVersion and MinorVersion in [General] name, so it is "
     "never read.",
     "Correct the two versions, or delete the entry."},
    {FindingId::LegacyResourceName, "legacy-resource-name", Severity::Warning,
     "The entry never matches a device: a resource name is KEL and a number, exactly so (for example KEL3).",
     "Correct the resource name, or delete the entry."},
    {FindingId::LegacyNotLocal, "legacy-not-local", Severity::Info,
     "The alias is of another machine (Local=False) and is never handed over.",
     "Nothing, or delete the section and number those behind it anew: a gap ends the reading."},
    {FindingId::LegacyBehindGap, "legacy-behind-gap", Severity::Warning,
     "The section is never read, because a number before it is missing or its own is oddly written.",
     "Number the sections from Alias0 without gaps."},
    {FindingId::LegacyDuplicate, "legacy-duplicate", Severity::Warning,
     "The alias is not handed over, because another entry for the same device comes first.",
     "Delete the entry that is not wanted; in the layout by tokens its section, and number those behind it "
     "anew: a gap ends the reading."},
};

constexpr bool isInOrder() {
    std::size_t position = 0;
    for (const FindingKind& kind : kinds)
        if (kind.id != static_cast<FindingId>(position++))
            return false;
    return position == static_cast<std::size_t>(FindingId::Count);
}
static_assert(isInOrder(), "the table follows FindingId");

} // namespace

const FindingKind& kindOf(FindingId id) noexcept {
    return kinds[static_cast<std::size_t>(id)];
}

const char* nameOf(Severity severity) noexcept {
    static constexpr const char* names[] = {"info", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

} // namespace vykeldev::doctor
