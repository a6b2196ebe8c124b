#ifndef VYKELDEV_CHECK_RULES_H
#define VYKELDEV_CHECK_RULES_H

#include "check/RuleTable.h"
#include <string_view>

namespace vykeldev::check {

/// The rule of that identifier in the table, which docs/plugin-rules.md defines; null when there is none.
inline const Rule* findRule(std::string_view id) {
    for (const Rule& rule : ruleTable)
        if (rule.id == id)
            return &rule;
    return nullptr;
}

} // namespace vykeldev::check

#endif
