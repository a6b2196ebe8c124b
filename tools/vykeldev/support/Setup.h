#ifndef VYKELDEV_SUPPORT_SETUP_H
#define VYKELDEV_SUPPORT_SETUP_H

#include <string>
#include <vector>

/// What the library needs on a machine before it can list anything: the registry key of the plug-ins, and the
/// folder of the lock files and the legacy aliases. The library itself makes neither.
namespace vykeldev {

/// One of the two.
struct SetupItem {
    const char* kind;  ///< "registry key" or "folder"
    std::string place; ///< Its full name, UTF-8.
    bool present;
};

/// Kind and place of an item, printable.
std::string describe(const SetupItem& item);

/// Looks for the registry key and the folder, in this order; changes nothing and does not look at rights.
/// Throws Failure when one cannot be looked for, or when a file has the folder's name.
std::vector<SetupItem> examineSetup();

/// Makes what is missing; the folder is one that all users share (platform/SharedFolder.h). What is there
/// stays as it is, but with `resetRights` an existing folder gets the rights of a new one. Returns what
/// examineSetup returned before. Throws Failure; then nothing new is left.
std::vector<SetupItem> completeSetup(bool resetRights);

} // namespace vykeldev

#endif
