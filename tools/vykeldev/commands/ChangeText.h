#ifndef VYKELDEV_COMMANDS_CHANGETEXT_H
#define VYKELDEV_COMMANDS_CHANGETEXT_H

#include "child/Devices.h"
#include <string>

namespace vykeldev {

/// A change as one line for people, without its end.
std::string toText(const DeviceChange& change, bool colour);

/// A change for programs; schemas/watch.schema.json describes it.
Json toDocument(const DeviceChange& change, std::uint32_t tokenFormat);

} // namespace vykeldev

#endif
