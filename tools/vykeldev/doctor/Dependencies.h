#ifndef VYKELDEV_DOCTOR_DEPENDENCIES_H
#define VYKELDEV_DOCTOR_DEPENDENCIES_H

#include "doctor/LibraryImage.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// A library that is imported and cannot be found or used.
struct BadDependency {
    std::string name;
    std::string importer;       ///< The library that imports it; empty: the plug-in itself.
    std::string unusableReason; ///< Why the file that was found cannot be used; empty: none was found.
};

/// Follows the imports of `plugin`, their imports, and so on, without loading anything; the system's own
/// libraries are not looked into. Returns each name once, those that the plug-in itself imports first.
std::vector<BadDependency> findBadDependencies(const LibraryImage& plugin);

} // namespace vykeldev::doctor

#endif
