#ifndef VYKELDEV_SUPPORT_JSONFAILURE_H
#define VYKELDEV_SUPPORT_JSONFAILURE_H

#include "support/Failure.h"
#include "support/Json.h"
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

/// Does `work`. With `json`, a Failure becomes an object on standard output before it leaves.
template <class Work>
auto withJsonFailure(bool json, int indentation, const Work& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        if (json)
            std::cout << textOf({{"schemaVersion", 1}, {"error", failure}}, indentation) << '\n';
        throw;
    }
}

} // namespace vykeldev

#endif
