#ifndef VYKELDEV_APPLICATION_H
#define VYKELDEV_APPLICATION_H

#include <string>
#include <vector>

namespace vykeldev {

/// Runs the tool with its arguments, in UTF-8, without the program's name. Writes to standard output and
/// standard error and answers with the process's exit code. Throws nothing.
int runApplication(const std::vector<std::string>& arguments) noexcept;

} // namespace vykeldev

#endif
