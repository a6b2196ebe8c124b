#ifndef VYKELDEV_SYSTEM_FAILURE_H
#define VYKELDEV_SYSTEM_FAILURE_H

#include "system/ToolCommand.h"
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace vykeldev {

/// Ends a command with exit code 1. All texts are for people, in UTF-8; meaning and remedy may be empty.
struct Failure : std::runtime_error {
    Failure(const std::string& what, std::string whatItMeans, std::string whatToDo,
            std::optional<std::int32_t> statusCode = std::nullopt,
            std::optional<std::string> codeName = std::nullopt, std::string place = "")
        : std::runtime_error(what), meaning(std::move(whatItMeans)), remedy(typeable(std::move(whatToDo))),
          code(statusCode), name(std::move(codeName)), raisedAt(std::move(place)) {}
    Failure() : Failure("", "", "") {}

    std::string meaning;
    std::string remedy;
    std::optional<std::int32_t> code; ///< Of the library or a plug-in, if it has one.
    std::optional<std::string> name;  ///< Of the code.
    std::string raisedAt;             ///< File and line in the library, for its developers; may be empty.
};

/// The user has asked this process to end, by Ctrl-C.
struct Stopped : Failure {
    Stopped() : Failure("stopped", "", "") {}
};

/// What to do when memory is exhausted.
constexpr const char* freeMemory = "End other programs and try again.";

/// The failure of a call of the operating system.
Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy);

} // namespace vykeldev

#endif
