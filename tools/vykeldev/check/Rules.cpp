#include "check/Rules.h"

#include "check/RuleTable.h"
#include <algorithm>
#include <iterator>

namespace vykeldev::check {

const std::vector<Rule>& allRules() {
    static const std::vector<Rule> rules(std::begin(ruleTable), std::end(ruleTable));
    return rules;
}

const Rule* findRule(std::string_view id) {
    const auto& rules = allRules();
    const auto found =
        std::find_if(rules.begin(), rules.end(), [id](const Rule& rule) { return rule.id == id; });
    return found == rules.end() ? nullptr : &*found;
}

} // namespace vykeldev::check
