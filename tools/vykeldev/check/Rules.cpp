#include "check/Checks.h"
#include <algorithm>
#include <iterator>

namespace vykeldev::check {

const Rule* findRule(std::string_view id) {
    const Rule* const found =
        std::find_if(std::begin(rules), std::end(rules), [id](const Rule& rule) { return rule.id == id; });
    return found == std::end(rules) ? nullptr : found;
}

} // namespace vykeldev::check
