#ifndef VYKELDEV_CHECK_RULES_H
#define VYKELDEV_CHECK_RULES_H

#include "check/Rule.h"
#include <string_view>
#include <vector>

namespace vykeldev::check {

/// All rules, each with an identifier of its own, after the one that it needs. docs/plugin-rules.md defines
/// them.
const std::vector<Rule>& allRules();

/// Null when there is none of that identifier.
const Rule* findRule(std::string_view id);

} // namespace vykeldev::check

#endif
