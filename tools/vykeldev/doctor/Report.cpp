#include "doctor/Report.h"

#include <iterator>

namespace vykeldev::doctor {
namespace {

constexpr const char* stepNames[] = {"registry value", "path",    "file",        "architecture",
                                     "dependency",     "load",    "entry point", "initialise",
                                     "list",           "refresh", "unload"};

} // namespace

const char* nameOf(Step step) noexcept {
    return stepNames[static_cast<std::size_t>(step)];
}

std::optional<Step> stepOf(const std::string& name) noexcept {
    const auto* const found = std::find(std::begin(stepNames), std::end(stepNames), name);
    if (found == std::end(stepNames))
        return std::nullopt;
    return static_cast<Step>(found - std::begin(stepNames));
}

const char* nameOf(Outcome outcome) noexcept {
    static constexpr const char* names[] = {"loaded", "refused", "failed"};
    return names[static_cast<std::size_t>(outcome)];
}

const char* nameOf(LockState::State state) noexcept {
    static constexpr const char* names[] = {"free", "held", "unusable"};
    return names[static_cast<std::size_t>(state)];
}

} // namespace vykeldev::doctor
