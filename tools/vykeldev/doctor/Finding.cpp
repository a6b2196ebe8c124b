#include "doctor/Finding.h"

#include <cstddef>

namespace vykeldev::doctor {
namespace {

std::vector<const FindingKind*>& definedKinds() {
    static std::vector<const FindingKind*> kinds;
    return kinds;
}

} // namespace

const char* nameOf(Severity severity) noexcept {
    static constexpr const char* names[] = {"info", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

FindingKind::FindingKind(const char* stableId, Severity itsSeverity, const char* itsMeaning,
                         const char* itsRemedy)
    : id(stableId), severity(itsSeverity), meaning(itsMeaning), remedy(itsRemedy) {
    definedKinds().push_back(this);
}

const std::vector<const FindingKind*>& FindingKind::all() {
    return definedKinds();
}

} // namespace vykeldev::doctor
