#ifndef VYKELDEV_CHECK_CHILD_H
#define VYKELDEV_CHECK_CHILD_H

#include "check/Rule.h"
#include <string>
#include <vector>

namespace vykeldev::check {

/// What a child process is to do.
struct ChildTask {
    std::string mark; ///< Before each line in which it tells what happens.
    std::string rule;
    std::string plugin;
    Stage stage = Stage::First;
    std::vector<std::string> notes;
};

/// The arguments with which this tool does that and tells a Runner what happens: a hidden command.
std::vector<std::string> childArguments(const ChildTask& task);

} // namespace vykeldev::check

#endif
