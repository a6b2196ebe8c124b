#ifndef VYKELDEV_DOCTOR_DEPENDENCIES_H
#define VYKELDEV_DOCTOR_DEPENDENCIES_H

#include "doctor/LibraryImage.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// A library that is asked for and cannot be had.
struct BadDependency {
    std::string name;
    std::string asker; ///< the library that asks for it; empty: the plug-in itself
    std::string unfit; ///< why what was found is of no use; empty: nothing was found
};

/// Goes through all that `plugin`, a file in `folder`, asks for, what that asks for, and so on; the system's
/// own libraries are taken for whole. Each name once, those of the plug-in first. Loads nothing.
std::vector<BadDependency> findBadDependencies(const LibraryImage& plugin, const std::string& folder);

} // namespace vykeldev::doctor

#endif
