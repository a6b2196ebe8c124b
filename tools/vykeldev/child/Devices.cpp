#include "child/Devices.h"

#include "output/Failures.h"
#include "vykel/StatusCodes.h"
#include <algorithm>
#include <charconv>

namespace vykeldev {
namespace {

DeviceInfo ask(vykel::IDevice& device, std::uint32_t index, std::uint32_t tokenFormat) {
    DeviceInfo info{index, device.getNumber(), std::nullopt, device.getVersion(), device.getSortKey(), {}};
    if (const char* const alias = device.getAlias())
        info.alias = alias;
    if (const char* const token = device.getPersistentToken(tokenFormat))
        info.token = token;
    return info;
}

} // namespace

void to_json(Json& json, const DeviceInfo& device) {
    json = {{"index", device.index},         {"number", numberOrNull(device.number)},
            {"alias", orNull(device.alias)}, {"version", device.version},
            {"sortKey", device.sortKey},     {"token", device.token}};
}

void from_json(const Json& json, DeviceInfo& device) {
    const Json& number = json.at("number");
    const Json& alias = json.at("alias");
    json.at("index").get_to(device.index);
    device.number = number.is_null() ? vykel::noDeviceNumber : number.get<std::uint32_t>();
    device.alias = alias.is_null() ? std::nullopt : std::optional(alias.get<std::string>());
    json.at("version").get_to(device.version);
    json.at("sortKey").get_to(device.sortKey);
    json.at("token").get_to(device.token);
}

std::vector<DeviceInfo> readDevices(vykel::IDeviceList& list, std::int32_t minVersion,
                                    std::uint32_t tokenFormat) {
    std::vector<DeviceInfo> devices;
    const std::uint32_t count = list.getCount();
    for (std::uint32_t index = 0; index < count; ++index) {
        vykel::StatusBlock status = vykel::makeStatusBlock();
        if (vykel::IDevice* const device = list.getDevice(index, minVersion, &status))
            devices.push_back(ask(*device, index, tokenFormat));
        else if (status.code != vykel::toInteger(vykel::StatusCode::VersionMismatch))
            throw statusFailure("getting device " + std::to_string(index), status);
    }
    return devices;
}

std::string numberText(std::uint32_t number) {
    return number == vykel::noDeviceNumber ? "-" : "KEL" + std::to_string(number);
}

std::optional<std::uint32_t> numberIn(const std::string& text) {
    std::uint32_t number = 0;
    std::from_chars(text.data() + std::min<std::size_t>(3, text.size()), text.data() + text.size(), number);
    const bool isWhole = number != vykel::noDeviceNumber && numberText(number) == text;
    return isWhole ? std::optional(number) : std::nullopt;
}

std::string numberFlaw(const std::string& text) {
    return numberIn(text) ? "" : "a number such as KEL3 expected, not '" + text + "'";
}

} // namespace vykeldev
