#ifndef VYKELDEV_OUTPUT_JSON_H
#define VYKELDEV_OUTPUT_JSON_H

#include "system/DisplayText.h"
#include "vykel/IDevice.h"
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/// What the commands print with --json: objects that keep the order of their fields.
namespace vykeldev {

using Json = nlohmann::ordered_json;

/// The value, or null.
template <class T>
Json orNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

/// The number of a device, or null when it has none.
inline Json numberOrNull(std::uint32_t number) {
    return number == vykel::noDeviceNumber ? Json(nullptr) : Json(number);
}

/// The text of a document; an indentation of -1 makes it one line. Bytes that are not UTF-8, which a plug-in
/// may give, become U+FFFD, so that the user still gets the rest. Control characters become escapes.
inline std::string textOf(const Json& json, int indentation = 2) {
    return printableJson(json.dump(indentation, ' ', false, Json::error_handler_t::replace));
}

} // namespace vykeldev

#endif
