#ifndef VYKELDEV_MACHINE_DEPENDENCIES_H
#define VYKELDEV_MACHINE_DEPENDENCIES_H

#include "machine/LibraryImage.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// Follows the imports of `plugin`, their imports, and so on, without loading anything; the system's own
/// libraries are not looked into. Returns for people which libraries cannot be found or used, each once,
/// those that the plug-in itself imports first. Fills `plugin.missingImports`. `path` is the plug-in's own.
std::vector<std::string> findBadDependencies(LibraryImage& plugin, const std::string& path);

/// The same of the library at an absolute path, as one text; or why the file is no library for this machine.
/// Empty when there is nothing to say.
std::string describeBadDependencies(const std::string& path);

} // namespace vykeldev::doctor

#endif
