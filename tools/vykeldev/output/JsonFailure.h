#ifndef VYKELDEV_OUTPUT_JSONFAILURE_H
#define VYKELDEV_OUTPUT_JSONFAILURE_H

#include "output/Json.h"
#include "system/Failure.h"
#include <iostream>

namespace vykeldev {

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
class PrintedFailure : public Failure {
public:
    explicit PrintedFailure(const Failure& failure) : Failure(failure) {}
};

/// Prints the one JSON object of a command after the `last` thing that the command does. What that throws
/// becomes the member "error" of the object, and leaves as a PrintedFailure.
template <class Work>
void printDocument(Json document, const Work& last) {
    try {
        last();
    } catch (...) {
        const Failure failure = currentFailure();
        document["error"] = failure;
        std::cout << textOf(document) << '\n';
        throw PrintedFailure(failure);
    }
    std::cout << textOf(document) << '\n';
}

} // namespace vykeldev

#endif
