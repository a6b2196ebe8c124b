#ifndef VYKELDEV_DOCTOR_LEGACYEXCERPT_H
#define VYKELDEV_DOCTOR_LEGACYEXCERPT_H

#include <set>
#include <string>

namespace vykeldev::doctor {

/// The part of the legacy alias file that is about aliases: the sections General, Aliases and Alias<number>.
/// Every other line that is not blank is replaced by a comment, so that all lines keep their numbers.
struct LegacyExcerpt {
    explicit LegacyExcerpt(const std::string& file);

    std::string text;
    std::set<int> leftOut; ///< The numbers of the lines that were replaced, from 1.
};

} // namespace vykeldev::doctor

#endif
