#ifndef VYKELDEV_SUPPORT_FAILURE_H
#define VYKELDEV_SUPPORT_FAILURE_H

#include "vykel/StatusBlock.h"
#include <stdexcept>
#include <string>
#include <windows.h>

namespace vykeldev {

/// Ends a command with exit code 1. All texts are for people, in UTF-8; meaning and remedy may be empty.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& what, std::string whatItMeans, std::string whatToDo)
        : std::runtime_error(what), meaning(std::move(whatItMeans)), remedy(std::move(whatToDo)) {}
    const std::string meaning;
    const std::string remedy;
};

/// The failure of a library or plug-in operation that answered with a status code. `action` says what failed,
/// as in "refreshing the devices".
Failure statusFailure(const std::string& action, const vykel::StatusBlock& status);
Failure statusFailure(const std::string& action, std::int32_t code);

/// The failure of a call of the operating system.
Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy);

} // namespace vykeldev

#endif
