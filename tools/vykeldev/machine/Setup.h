#ifndef VYKELDEV_MACHINE_SETUP_H
#define VYKELDEV_MACHINE_SETUP_H

#include <string>
#include <vector>

/// What the library needs on a machine before it can list anything: the registry key of the plug-ins, and the
/// folder of the lock files and the legacy aliases. The library itself makes neither. setup also makes the
/// two lock files: users may make files in the folder, and with files in it that they cannot delete it cannot
/// become a link.
namespace vykeldev {

/// One of these.
struct SetupItem {
    const char* kind;  ///< "registry key", "folder" or "lock file"
    std::string place; ///< Its full name, UTF-8.
    bool present;
};

/// Kind and place of an item, printable.
std::string describe(const SetupItem& item);

/// Looks for the registry key, the folder above, the folder and the two lock files, in this order; changes
/// nothing and does not look at owners and rights. Throws Failure when one cannot be looked for, or when
/// something else is in its place: a file, a folder or a link.
std::vector<SetupItem> examineSetup();

/// Makes what is missing, with the right owner and rights. What is there stays as it is, but a folder that
/// another user owns is made anew when it is empty. With `resetRights` all that is there gets the rights of a
/// new one, and a lock file that another user owns is made anew. Returns what was
/// there before and stayed. Throws Failure, also when another user owns a folder with something in it; then
/// nothing new is left.
std::vector<SetupItem> completeSetup(bool resetRights);

} // namespace vykeldev

#endif
