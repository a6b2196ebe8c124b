#ifndef VYKELDEV_OUTPUT_JSON_H
#define VYKELDEV_OUTPUT_JSON_H

#include "vykel/IDevice.h"
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

/// What the commands print with --json: objects that keep the order of their fields.
namespace vykeldev {

using Json = nlohmann::ordered_json;

/// The text, or null when it is empty.
inline Json textOrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

/// The number of a device, or null when it has none.
inline Json numberOrNull(std::uint32_t number) {
    return number == vykel::noDeviceNumber ? Json(nullptr) : Json(number);
}

/// A type that has a tuple `members`, of pairs such as {"index", &Type::index}, is an object of these
/// members.
template <class T, class = decltype(T::members)>
void to_json(Json& json, const T& value) {
    std::apply([&](const auto&... each) { ((json[each.first] = value.*each.second), ...); }, T::members);
}
template <class T, class = decltype(T::members)>
void from_json(const Json& json, T& value) {
    std::apply([&](const auto&... each) { (json.at(each.first).get_to(value.*each.second), ...); },
               T::members);
}
/// One of the pairs.
template <class T, class Member>
constexpr std::pair<const char*, Member T::*> member(const char* name, Member T::*pointer) {
    return {name, pointer};
}

/// The text of a document; an indentation of -1 makes it one line. It is ASCII: a shell may take what it
/// reads from a pipe for another encoding than UTF-8. Bytes that are not UTF-8, which a plug-in may give,
/// become U+FFFD, so that the user still gets the rest.
inline std::string textOf(const Json& json, int indentation = 2) {
    return json.dump(indentation, ' ', true, Json::error_handler_t::replace);
}

} // namespace vykeldev

/// No value is null.
template <class T>
struct nlohmann::adl_serializer<std::optional<T>> {
    static void to_json(vykeldev::Json& json, const std::optional<T>& value) {
        json = value ? vykeldev::Json(*value) : vykeldev::Json();
    }
    static void from_json(const vykeldev::Json& json, std::optional<T>& value) {
        value = json.is_null() ? std::nullopt : std::optional(json.get<T>());
    }
};

#endif
