#include "doctor/Report.h"

#include "System.h"
#include "Text.h"
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

// Texts in the document are in the system's code page, its structure is ASCII.
LibraryError makeLibraryError(std::int32_t code, const std::string& document) {
    LibraryError error;
    error.code = code;
    error.document = Json::parse(toUtf8(toWide(document)), nullptr, false);
    if (error.document.is_discarded())
        error.document = nullptr;
    const Json system = error.document.is_object() ? error.document.value("internal_error", Json()) : Json();
    if (system.is_object() && system.value("code", Json()).is_number_integer()) {
        error.system = system["code"].get<std::uint32_t>();
        error.systemText = systemErrorText(*error.system);
    }
    return error;
}

} // namespace vykeldev::doctor
