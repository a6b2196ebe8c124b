#ifndef VYKELDEV_PLATFORM_SHAREDFOLDER_H
#define VYKELDEV_PLATFORM_SHAREDFOLDER_H

#include <string>
#include <windows.h>

/// A folder that all users of the machine share. Every user may make, lock, change, replace and delete the
/// files in it; administrators and the system control it; nobody else has a right to it, also not through the
/// folder above it. The host has no such rights. Paths are UTF-8.
namespace vykeldev {

/// Makes such a folder. Returns the system's error; 0 is success. Throws Failure when the rights cannot be
/// prepared.
DWORD makeSharedFolder(const std::string& path);

/// Gives these rights to an existing folder, and to the files in it those that they inherit from it. Throws
/// Failure, also when the folder is a link: the rights of another folder are not this tool's to change.
void shareFolder(const std::string& path);

} // namespace vykeldev

#endif
