#ifndef VYKELDEV_SYSTEM_FAILURE_H
#define VYKELDEV_SYSTEM_FAILURE_H

#include "system/ToolCommand.h"
#include <cstdint>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace vykeldev {

/// Ends a command with exit code 1. All texts are for people, in UTF-8; meaning and remedy may be empty.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& what, std::string whatItMeans, std::string whatToDo,
            std::int32_t statusCode = 0, std::string codeName = "", std::string place = "")
        : std::runtime_error(what), meaning(std::move(whatItMeans)), remedy(typeable(std::move(whatToDo))),
          code(statusCode), name(std::move(codeName)), raisedAt(std::move(place)) {}
    /// The same with another reason.
    Failure withReason(const std::string& whatItMeans, const std::string& whatToDo) const {
        return {what(), whatItMeans, whatToDo, code, name, raisedAt};
    }
    const std::string meaning;
    const std::string remedy;
    const std::int32_t code;    ///< Of the library or a plug-in; 0: it has none.
    const std::string name;     ///< Of the code.
    const std::string raisedAt; ///< File and line in the library, for its developers; may be empty.
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
