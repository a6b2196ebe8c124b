#ifndef VYKELDEV_OUTPUT_FAILURES_H
#define VYKELDEV_OUTPUT_FAILURES_H

#include "output/Json.h"
#include "system/Failure.h"
#include "vykel/StatusBlock.h"
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>

namespace vykeldev {

/// What an error says in a status block of full size beside its code, for the end of a sentence, as in "; the
/// plug-in names left.devices:3". Printable UTF-8, or empty.
std::string originText(const vykel::StatusBlock& status);

/// The exception that is being handled, whatever it is. `action` says what failed when it is the library's.
Failure currentFailure(const std::string& action = "a step of the library");

/// Prints a failure, printable, after `label`, as in "vykeldev: error: "; when `verbose`, also where it was
/// raised.
void printFailure(std::ostream& out, const std::string& label, const Failure& failure, bool verbose);

/// The failure of a library or plug-in operation that answered with a status code. `action` says what failed,
/// as in "refreshing the devices".
Failure statusFailure(const std::string& action, const vykel::StatusBlock& status);
Failure statusFailure(const std::string& action, std::int32_t code);

/// A failure as the commands print it with --json, and back.
inline void to_json(Json& json, const Failure& failure) {
    const bool coded = failure.code != 0;
    json = {{"code", coded ? Json(failure.code) : Json()},
            {"name", coded ? Json(failure.name) : Json()},
            {"message", failure.what()},
            {"meaning", failure.meaning},
            {"whatToDo", failure.remedy}};
    if (!failure.raisedAt.empty())
        json["raisedAt"] = failure.raisedAt;
}
inline Failure failureFrom(const Json& json) {
    const Failure plain(json.at("message"), json.at("meaning"), json.at("whatToDo"));
    return json.at("code").is_null() ? plain
                                     : Failure(plain.what(), plain.meaning, plain.remedy, json.at("code"),
                                               json.at("name"), json.value("raisedAt", ""));
}

/// A failure that the command has printed in its own JSON object, so that nobody prints another one.
struct PrintedFailure {
    std::exception_ptr failure;
};

/// Prints the one JSON object of a command after the `last` thing that the command does. What that throws
/// becomes the member "error" of the object, and leaves as a PrintedFailure.
template <class Work>
void printDocument(Json document, const Work& last) {
    try {
        last();
    } catch (...) {
        document["error"] = currentFailure();
        std::cout << textOf(document) << '\n';
        throw PrintedFailure{std::current_exception()};
    }
    std::cout << textOf(document) << '\n';
}

} // namespace vykeldev

#endif
