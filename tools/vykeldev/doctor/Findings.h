#ifndef VYKELDEV_DOCTOR_FINDINGS_H
#define VYKELDEV_DOCTOR_FINDINGS_H

#include "doctor/Finding.h"

/// Everything that the doctor can find. docs/troubleshooting.md has the same texts; a test compares them.
namespace vykeldev::doctor::finding {

// Tool and library
inline const FindingKind libraryMissing{
    "library-missing", Severity::Error,
    "The library vykeldevenum is missing, cannot be loaded or is another library, so no program "
    "can list devices with it.",
    "Install the tool and the library again, from one release and into one folder, or give the "
    "library's path with --library."};
inline const FindingKind libraryVersion{
    "library-version", Severity::Warning,
    "The tool and the library are from different releases, so clients may see "
    "something else than the doctor.",
    "Install both from one release, or give the path of the right library with --library."};

// Registration
inline const FindingKind pluginsKeyMissing{
    "plugins-key-missing", Severity::Error,
    "The registry key of the plug-ins is missing, so no client can initialise the library.",
    "Run 'vykeldev setup' as administrator: it makes the key."};
inline const FindingKind pluginsKeyDenied{
    "plugins-key-denied", Severity::Error,
    "This user may not read the registry key of the plug-ins, so no client of this user "
    "can initialise the library.",
    "Let the users of the devices read the key and its subkeys."};
inline const FindingKind pluginsNone{
    "plugins-none", Severity::Warning, "No plug-in is registered, so every list of devices is empty.",
    "Install the driver of your device, or register its plug-in with 'vykeldev register NAME PATH'."};
inline const FindingKind valueMissing{
    "value-missing", Severity::Error,
    "The plug-in's registry key has no readable value EnumeratorPluginPath.",
    "Register the plug-in again with 'vykeldev register NAME PATH', or remove it with "
    "'vykeldev unregister NAME'."};
inline const FindingKind valueType{
    "value-type", Severity::Warning,
    "The value EnumeratorPluginPath is not plain text (REG_SZ). The library takes its bytes as they are and "
    "does not replace variables such as %ProgramFiles%.",
    "Register the plug-in again with 'vykeldev register NAME PATH'."};
inline const FindingKind valueUnterminated{
    "value-unterminated", Severity::Info,
    "The value EnumeratorPluginPath is stored without its terminating zero. The library can read "
    "it; other programs may not.",
    "Register the plug-in again with 'vykeldev register NAME PATH'."};
inline const FindingKind pathEmpty{
    "path-empty", Severity::Error, "The registered path is empty or names a folder.",
    "Register the plug-in again with the path of its DLL: 'vykeldev register NAME PATH'."};
inline const FindingKind pathRelative{
    "path-relative", Severity::Warning,
    "The registered path is relative, so the client program decides which file it means.",
    "Register the plug-in again with its absolute path: 'vykeldev register NAME PATH'."};
inline const FindingKind pathDuplicate{
    "path-duplicate", Severity::Warning,
    "The same file is registered more than once: it is initialised once for each registration, and its "
    "devices appear repeatedly.",
    "Remove all but one of the registrations with 'vykeldev unregister NAME'."};

inline const FindingKind keyWritable{
    "key-writable", Severity::Warning,
    "Ordinary users may change the registry key of the plug-ins, or of one of them, so any user can make "
    "every client, also an administrator's, run a library of theirs.",
    "Let only administrators and the system change the key."};

// The plug-in's file
inline const FindingKind fileWritable{
    "file-writable", Severity::Warning,
    "Ordinary users may change the plug-in's file, or replace it in its folder, so any user can make every "
    "client, also an administrator's, run code of theirs.",
    "Install the plug-in where only administrators may write, such as Program Files, and register it again."};
inline const FindingKind fileMissing{
    "file-missing", Severity::Error, "The registered file does not exist.",
    "Install the plug-in again, or remove its registration with 'vykeldev unregister NAME'."};
inline const FindingKind fileUnreadable{
    "file-unreadable", Severity::Error, "The registered file exists but cannot be read.",
    "Give the users of the devices the right to read and execute the file and its folder."};
inline const FindingKind fileNotALibrary{
    "file-not-a-library", Severity::Error, "The registered file is not a library, or it is damaged.",
    "Install the plug-in again, or register the right file with 'vykeldev register NAME PATH'."};
inline const FindingKind architectureWrong{
    "architecture-wrong", Severity::Error,
    "The registered library is made for another kind of processor or process.",
    "Install the plug-in's 64-bit (x86-64) version."};
inline const FindingKind dependencyMissing{
    "dependency-missing", Severity::Error,
    "The plug-in needs a library, or a function of one, that the system does not find. The system looks "
    "beside the client program, in its own folders and along PATH, but not beside the plug-in.",
    "Install what is missing (often a runtime of the plug-in's compiler), or ask the vendor for a "
    "version that includes it."};
inline const FindingKind loadRefused{
    "load-refused", Severity::Error,
    "The system does not load the library, though the file seems to be in order.",
    "Read the system's text; often the library's own start-up code failed. Report it to "
    "the vendor of the plug-in."};
inline const FindingKind entryPointMissing{
    "entry-point-missing", Severity::Error,
    "The library does not export all three entry points, so it is not a plug-in of this "
    "family, or an unfinished one.",
    "Register the right file. Authors: export vykel_initializePlugin, vykel_getPluginInterface and "
    "vykel_finalizePlugin undecorated."};

// The plug-in at work
inline const FindingKind probeImpossible{
    "probe-impossible", Severity::Warning,
    "The tool could not start the process in which it tries the plug-in, so it knows "
    "nothing about the plug-in.",
    "End other programs and try again, and check that this user may start processes here."};
inline const FindingKind pluginRefused{
    "plugin-refused", Severity::Warning, "The plug-in itself reported that it cannot be used now.",
    "Look the code up in the plug-in's documentation; often its driver or service is not "
    "installed or not running."};
inline const FindingKind listMissing{"list-missing", Severity::Error,
                                     "The plug-in reported success but handed out no list.",
                                     "Report it to the vendor of the plug-in."};
inline const FindingKind refreshFailed{
    "refresh-failed", Severity::Error,
    "The plug-in cannot update its list of devices, so its devices are left out.",
    "Look the code up in the plug-in's documentation."};
inline const FindingKind deviceRefused{
    "device-refused", Severity::Error,
    "The plug-in's list counts a device that it does not return. This device and all later ones of the list "
    "are left out; the earlier ones stay.",
    "Look the code up in the plug-in's documentation, and report it to the vendor of the plug-in."};
inline const FindingKind pluginThrew{
    "plugin-threw", Severity::Error,
    "The plug-in let an exception out, which its contract forbids. At the step refresh this makes the whole "
    "refresh of every client fail, for all plug-ins.",
    "Remove it with 'vykeldev unregister NAME' until the vendor has fixed it."};
inline const FindingKind pluginCrashed{
    "plugin-crashed", Severity::Error, "The plug-in crashed its process, as it would crash every client.",
    "Remove it with 'vykeldev unregister NAME' until the vendor has fixed it."};
inline const FindingKind pluginExited{
    "plugin-exited", Severity::Error, "The plug-in ended its process, as it would end every client.",
    "Remove it with 'vykeldev unregister NAME' until the vendor has fixed it."};
inline const FindingKind pluginHung{
    "plugin-hung", Severity::Error, "The plug-in did not return in time. Every client would wait for it.",
    "Try again with a larger --timeout. If it still hangs, remove the plug-in with 'vykeldev unregister "
    "NAME' and report it to the vendor."};

// Devices
inline const FindingKind refreshSlow{
    "refresh-slow", Severity::Warning,
    "The plug-in needs longer than 2 seconds to refresh its list. Every client waits for it.",
    "Report it to the vendor of the plug-in, unless its devices need that time."};
inline const FindingKind tokenMissing{
    "token-missing", Severity::Warning,
    "A device has no persistent token, so it never gets a legacy alias and nobody can recognise it later.",
    "Report it to the vendor of the plug-in."};
inline const FindingKind tokenDuplicate{
    "token-duplicate", Severity::Warning,
    "Several devices of a plug-in have the same persistent token, so a legacy alias may go to the wrong one.",
    "Give the devices different serial numbers if you can, or report it to the vendor of the plug-in."};
inline const FindingKind textNotUtf8{
    "text-not-utf8", Severity::Warning,
    "A token or an alias of a device is not valid UTF-8, so clients show it wrongly or refuse it.",
    "Report it to the vendor of the plug-in."};

// Device numbers
inline const FindingKind numberDuplicate{
    "number-duplicate", Severity::Error,
    "Several devices have the same number, so clients and legacy aliases cannot tell them apart.",
    "Look for plug-ins that report the same device, or that were copied with their stored numbers. When they are "
    "different devices, run 'vykeldev renumber KEL2' with their number: all but the first get numbers of their "
    "own."};
inline const FindingKind numberMissing{
    "number-missing", Severity::Info,
    "Devices have no number yet. They get one when a client next refreshes its list.",
    "Run 'vykeldev list'. If that crashes or hangs, or the numbers do not stay, the plug-in cannot store "
    "them: see its documentation, or run 'vykeldev check --number-devices PATH' with the path of its DLL."};

// Folder and locks
inline const FindingKind folderUnknown{
    "folder-unknown", Severity::Error,
    "The system does not report its folder for data common to all users, so no client gets a list.",
    "Check that the folder (usually ProgramData on drive C) exists and that the registry has its right path."};
inline const FindingKind folderMissing{
    "folder-missing", Severity::Error, "The folder of the lock files is missing, so every refresh fails.",
    "Run 'vykeldev setup' as administrator: it makes the folder and lets every user write in it."};
inline const FindingKind folderReadOnly{
    "folder-read-only", Severity::Info,
    "This user may not make files in the folder. That matters only when a lock file is missing or vykel.ini "
    "holds aliases; lock-unusable or legacy-not-writable then reports it.",
    "Nothing, or let the users of the devices write in the folder."};
inline const FindingKind folderLink{
    "folder-link", Severity::Warning,
    "The folder or the one above it is a link, or a file of the folder is a link or has a second name. Somebody may "
    "have made it so that clients read, make or replace files in another place.",
    "Find out who made it, delete it, not what it leads to, and run 'vykeldev setup' as administrator. When vykel.ini "
    "is the link and its aliases are needed, put a copy of the other file in its place."};
inline const FindingKind folderOwner{
    "folder-owner", Severity::Warning,
    "The folder belongs neither to administrators nor to the system. Its owner can make it a link at any time, so that "
    "clients read, make or replace files in another place.",
    "As administrator, look at what is in it, move it away and run 'vykeldev setup'."};
inline const FindingKind folderRights{
    "folder-rights", Severity::Warning,
    "Ordinary users may do more with the folder than clients need, such as rename it or make it a link, so that "
    "clients read, make or replace files in another place.",
    "Run 'vykeldev setup --reset-rights' as administrator."};
inline const FindingKind lockUnusable{
    "lock-unusable", Severity::Error,
    "A lock file cannot be opened or made, or the system refuses to lock it, so every refresh fails.",
    "Run 'vykeldev setup --reset-rights' as administrator: it lets every user lock the file. If that does not help, "
    "remove what is in the file's place. The folder must be on a local disk."};
inline const FindingKind lockHeld{
    "lock-held", Severity::Warning,
    "Another process holds the lock and did not release it in time. Every refresh waits for it.",
    "Look for a client that hangs in a refresh and end it; the system then frees the lock. Do "
    "not delete the lock file."};

// The legacy alias file
inline const FindingKind legacyUnreadable{
    "legacy-unreadable", Severity::Warning,
    "The legacy alias file exists but cannot be read, so its aliases are not handed over.",
    "Close the program that holds the file open, and let the users of the devices read the file."};
inline const FindingKind legacyEncoding{
    "legacy-encoding", Severity::Warning,
    "The legacy alias file is in UTF-16 or UTF-32, so none of its aliases is handed over.",
    "Save the file in UTF-8, or delete it when nobody needs its aliases any longer."};
inline const FindingKind legacyNotWritable{
    "legacy-not-writable", Severity::Error,
    "The legacy alias file cannot be replaced, so every refresh that finds a device for one of its "
    "entries fails with -50209.",
    "Let the users of the devices write the file and its folder, and remove what is in the way; or delete "
    "the file when nobody needs its aliases any longer."};
inline const FindingKind legacyMalformed{
    "legacy-malformed", Severity::Error,
    "The legacy alias file has a malformed alias section, so every refresh fails.",
    "Correct the section that is named: it needs Alias, PersistentToken, and Local=True or Local=False. Or "
    "delete it and renumber the sections after it: reading stops at the first gap."};
inline const FindingKind legacyLineIgnored{
    "legacy-line-ignored", Severity::Warning,
    "A line of the legacy alias file is ignored: it is not a section, an entry with a value or a comment, "
    "or it is before the first section.",
    "Correct the line, or delete it."};
inline const FindingKind legacyOtherLayout{
    "legacy-other-layout", Severity::Warning,
    "The entry is never read: it belongs to another layout than the one that MajorVersion and "
    "MinorVersion in [General] select.",
    "Correct the two versions, or delete the entry."};
inline const FindingKind legacyResourceName{
    "legacy-resource-name", Severity::Warning,
    "The entry never matches a device: a resource name is KEL and a number, spelled exactly like KEL3.",
    "Correct the resource name, or delete the entry."};
inline const FindingKind legacyNotLocal{
    "legacy-not-local", Severity::Info,
    "The alias belongs to another machine (Local=False) and is never handed over.",
    "Nothing. Or delete the section and renumber the sections after it: reading stops at the first gap."};
inline const FindingKind legacyBehindGap{
    "legacy-behind-gap", Severity::Warning,
    "The section is never read: a number before it is missing, or its own number is "
    "not written like the others.",
    "Number the sections from Alias0 without gaps."};
inline const FindingKind legacyDuplicate{
    "legacy-duplicate", Severity::Warning,
    "The alias is not handed over, because an earlier entry is for the same device.",
    "Delete the entry that you do not need. In the layout by tokens, delete its section and renumber the "
    "sections after it: reading stops at the first gap."};

} // namespace vykeldev::doctor::finding

#endif
