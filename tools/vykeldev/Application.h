#ifndef VYKELDEV_APPLICATION_H
#define VYKELDEV_APPLICATION_H

#include <string>
#include <vector>

namespace vykeldev {

/// Runs the tool with its arguments, in UTF-8, without the program's name. Writes to standard output and
/// standard error and returns the exit code of the process. Throws nothing.
int runApplication(const std::vector<std::string>& arguments) noexcept;

} // namespace vykeldev

#endif
