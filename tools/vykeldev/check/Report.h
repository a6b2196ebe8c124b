#ifndef VYKELDEV_CHECK_REPORT_H
#define VYKELDEV_CHECK_REPORT_H

#include "check/Result.h"
#include "output/Json.h"
#include <iosfwd>

namespace vykeldev::check {

/// One result for people, with meaning and remedy when the rule is broken, or why it was skipped. Nothing
/// for a consequence of another result.
void printResult(std::ostream& out, const Result& result, bool colour);

/// The last lines: what was skipped because of which rule, and how many there are of each outcome.
void printSummary(std::ostream& out, const Results& results);

/// All results as one JSON object; schemas/check.schema.json describes it.
Json toDocument(const std::string& plugin, const Results& results);

} // namespace vykeldev::check

#endif
