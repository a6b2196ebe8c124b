#ifndef VYKELDEV_DOCTOR_FINDING_H
#define VYKELDEV_DOCTOR_FINDING_H

#include <string>
#include <vector>

namespace vykeldev::doctor {

enum class Severity { Info, Warning, Error };
const char* nameOf(Severity severity) noexcept;

/// What never changes about a finding; Findings.h defines them all.
class FindingKind {
public:
    FindingKind(const char* stableId, Severity itsSeverity, const char* itsMeaning, const char* itsRemedy);
    FindingKind(const FindingKind&) = delete;
    FindingKind& operator=(const FindingKind&) = delete;

    const char* const id; ///< Scripts and documents rely on it.
    const Severity severity;
    const char* const meaning;
    const char* const remedy;

    /// All that are defined, in the order of their definitions. The list is complete when main() starts.
    static const std::vector<const FindingKind*>& all();
};

/// One thing found on this machine. Texts are UTF-8 and may hold anything.
struct Finding {
    const FindingKind* kind;
    std::string subject; ///< The plug-in, file, folder or number that it is about.
    std::string detail;  ///< What was seen; may be empty.
    int line = 0;        ///< In the file `subject`, from 1; 0: it is about no line.
};

using Findings = std::vector<Finding>;

} // namespace vykeldev::doctor

#endif
