#ifndef VYKELDEV_SYSTEM_FAILURE_H
#define VYKELDEV_SYSTEM_FAILURE_H

#include "vykel/StatusBlock.h"
#include <cstdint>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <windows.h>

namespace vykeldev {

/// Ends a command with exit code 1. All texts are for people, in UTF-8; meaning and remedy may be empty.
class Failure : public std::runtime_error {
public:
    Failure(const std::string& what, std::string whatItMeans, std::string whatToDo,
            std::int32_t statusCode = 0, std::string codeName = "", std::string place = "")
        : std::runtime_error(what), meaning(std::move(whatItMeans)), remedy(std::move(whatToDo)),
          code(statusCode), name(std::move(codeName)), raisedAt(std::move(place)) {}
    const std::string meaning;
    const std::string remedy;
    const std::int32_t code;    ///< Of the library or a plug-in; 0: it has none.
    const std::string name;     ///< Of the code.
    const std::string raisedAt; ///< File and line in the library, for its developers; may be empty.
};

/// What to do when memory is exhausted.
constexpr const char* freeMemory = "End other programs and try again.";

/// The exception that is being handled, whatever it is. `action` says what failed when it is the library's.
Failure currentFailure(const std::string& action = "a step of the library");

/// Prints a failure, printable, after `label`, as in "vykeldev: error: "; when `verbose`, also where it was
/// raised.
void printFailure(std::ostream& out, const std::string& label, const Failure& failure, bool verbose);

/// The failure of a library or plug-in operation that answered with a status code. `action` says what failed,
/// as in "refreshing the devices".
Failure statusFailure(const std::string& action, const vykel::StatusBlock& status);
Failure statusFailure(const std::string& action, std::int32_t code);

/// The action of the library that reads the registry key of the plug-ins. When it does not find a resource,
/// the key is missing; for every other action, a folder is.
constexpr const char* initialization = "initialising the library";
inline bool isInitialization(const Failure& failure) {
    return std::string(failure.what()).rfind(initialization, 0) == 0;
}

/// The failure of a call of the operating system.
Failure systemFailure(const std::string& action, DWORD error, const std::string& remedy);

} // namespace vykeldev

#endif
