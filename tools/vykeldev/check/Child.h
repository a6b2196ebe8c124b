#ifndef VYKELDEV_CHECK_CHILD_H
#define VYKELDEV_CHECK_CHILD_H

#include <string>
#include <vector>

namespace vykeldev::check {

/// The arguments with which this tool checks one rule in its own process and tells a Runner what happens: a
/// hidden command.
std::vector<std::string> checkRuleArguments(const std::string& rule, const std::string& plugin);

} // namespace vykeldev::check

#endif
