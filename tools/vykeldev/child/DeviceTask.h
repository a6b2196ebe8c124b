#ifndef VYKELDEV_CHILD_DEVICETASK_H
#define VYKELDEV_CHILD_DEVICETASK_H

#include "child/ChildTask.h"
#include "child/DeviceEdit.h"
#include "child/Devices.h"
#include <cstdint>
#include <optional>
#include <string>

/// The client of the library: plug-ins run in its process, so it is a child process of this tool.
namespace vykeldev {

/// What a client is to do: it refreshes and reads the devices until there are enough of them.
struct DeviceRequest {
    std::string library;                ///< Path of the library, UTF-8.
    std::optional<Selection> selection; ///< Of the devices to read; none: they are only counted.
    std::uint32_t enough = 0;           ///< It ends when the count is that high; 0: after one reading.
    double interval = 0;                ///< Seconds between two readings.
    std::optional<DeviceEdit> edit = std::nullopt; ///< Done after the last reading.

    static constexpr std::tuple members{
        member("library", &DeviceRequest::library), member("selection", &DeviceRequest::selection),
        member("enough", &DeviceRequest::enough), member("interval", &DeviceRequest::interval),
        member("edit", &DeviceRequest::edit)};
};

/// Its argument is a DeviceRequest. Reports each "device" of a reading and then its "count" and the "failure"
/// of the refresh or null; a reading that is like the last one is not reported. The count is that of all
/// devices, or of those that are selected by name. Then it reports each "change" of an edit. Its steps are
/// texts for people; the empty one means that it sleeps.
extern const ChildTask deviceTask;

} // namespace vykeldev

#endif
