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
    json = {{"code", failure.code},
            {"name", failure.name},
            {"message", failure.what()},
            {"meaning", failure.meaning},
            {"whatToDo", failure.remedy}};
    if (!failure.raisedAt.empty())
        json["raisedAt"] = failure.raisedAt;
}
inline void from_json(const Json& json, Failure& failure) {
    failure = {json.at("message"), json.at("meaning"), json.at("whatToDo")};
    json.at("code").get_to(failure.code);
    json.at("name").get_to(failure.name);
    failure.raisedAt = json.value("raisedAt", "");
}

} // namespace vykeldev

#endif
