#ifndef VYKELDEV_DOCTOR_FINDING_H
#define VYKELDEV_DOCTOR_FINDING_H

#include "vytpl/NonCopyable.h"
#include <cstddef>
#include <string>
#include <vector>

namespace vykeldev::doctor {

/// An error makes plug-ins, devices or whole lists missing; a warning may soon, or hurts otherwise; an info
/// helps only to understand the rest.
enum class Severity { Info, Warning, Error };
constexpr const char* severityNames[] = {"info", "warning", "error"};
constexpr const char* nameOf(Severity severity) noexcept {
    return severityNames[static_cast<std::size_t>(severity)];
}

/// What never changes about a finding; Findings.h defines them all.
class FindingKind : private vytpl::NonCopyableT<FindingKind> {
public:
    FindingKind(const char* stableId, Severity itsSeverity, const char* itsMeaning, const char* itsRemedy)
        : id(stableId), severity(itsSeverity), meaning(itsMeaning), remedy(itsRemedy) {
        defined().push_back(this);
    }

    const char* const id; ///< Scripts and documents rely on it.
    const Severity severity;
    const char* const meaning;
    const char* const remedy;

    /// All that are defined, in the order of their definitions. The list is complete when main() starts.
    static const std::vector<const FindingKind*>& all() { return defined(); }

private:
    static std::vector<const FindingKind*>& defined() {
        static std::vector<const FindingKind*> kinds;
        return kinds;
    }
};

/// One thing found on this machine. Texts are UTF-8 and may hold anything.
struct Finding {
    const FindingKind* kind;
    std::string subject;     ///< The plug-in, file, folder or number that it is about.
    std::string detail;      ///< What was seen; may be empty.
    int line = 0;            ///< In the file `subject`, from 1; 0: it is about no line.
    std::string remedy = {}; ///< What helps here, when that is less than the kind's remedy; or empty.

    /// The remedy, with the plug-in's name in place of NAME where the finding is about a plug-in.
    std::string whatToDo() const;
};

using Findings = std::vector<Finding>;

} // namespace vykeldev::doctor

#endif
