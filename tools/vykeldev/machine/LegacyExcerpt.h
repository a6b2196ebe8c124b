#ifndef VYKELDEV_MACHINE_LEGACYEXCERPT_H
#define VYKELDEV_MACHINE_LEGACYEXCERPT_H

#include "doctor/Report.h"
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// The lines of the legacy alias file's content that are about aliases: those of the sections General,
/// Aliases and Alias<number>, without their ends and without blank lines. Whatever else is in the file is
/// nobody's business.
std::vector<LegacyLine> aliasLinesOf(const std::string& file);

} // namespace vykeldev::doctor

#endif
