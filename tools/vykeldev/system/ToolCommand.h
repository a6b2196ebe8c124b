#ifndef VYKELDEV_SYSTEM_TOOLCOMMAND_H
#define VYKELDEV_SYSTEM_TOOLCOMMAND_H

#include <string>
#include <windows.h>

/// How a user starts this tool.
namespace vykeldev {

/// The path of a library in this process, or of this tool's program for null. Empty when the system does not
/// say it.
std::string modulePath(HMODULE module);

/// A text for people in which each command "'vykeldev ..." can be typed as it stands: where the shell does
/// not find this tool by its name, its path takes the place of the name.
std::string typeable(std::string text);

} // namespace vykeldev

#endif
