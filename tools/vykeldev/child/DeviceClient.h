#ifndef VYKELDEV_CHILD_DEVICECLIENT_H
#define VYKELDEV_CHILD_DEVICECLIENT_H

#include "child/ChildTask.h"
#include "child/Devices.h"
#include "child/DeviceTask.h"
#include "output/Command.h"
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vykeldev {

/// What a client of the library saw when it last looked.
struct Reading {
    std::uint32_t count = 0; ///< Of all devices, those of lower versions, too; or of those selected by name.
    std::vector<DeviceInfo> devices; ///< As the request asks.
    std::optional<Failure> failure;  ///< Why the devices may not be up to date, if so.
};

/// A client of the library at work in a child process, so that no plug-in can harm this process. The client
/// is killed when this object ends before it; the library allows that at any time. One thread.
class DeviceClient {
public:
    using Clock = std::chrono::steady_clock;

    using ChangeHandler = std::function<void(const DeviceChange& change)>;

    /// Starts the client. When it is blocked for two seconds, standard error says by what: on a terminal, or
    /// when the user asked for it. next() calls `onChange` for each change of an edit. Throws Failure.
    DeviceClient(const DeviceRequest& request, const Context& context, ChangeHandler onChange = {});

    enum class Event {
        Read,    ///< There is a new reading.
        Done,    ///< There were enough devices, and all plug-ins are unloaded.
        TimeOver ///< Nothing happened before the deadline.
    };
    /// Waits for what happens next. Throws Failure when the client failed, or a plug-in ended it, and
    /// Stopped.
    Event next(Clock::time_point deadline);

    /// Waits for `wanted`. Throws Failure also when another event comes first.
    void await(Event wanted, Clock::time_point deadline);

    /// The last reading.
    const Reading& reading() const noexcept { return lastReading; }

    /// What has blocked the client for a while, as far as this process can see; empty when nothing has.
    std::string obstacle() const;

private:
    void take(const Json& report);
    void showObstacle();

    const bool showsObstacle;
    std::string shownObstacle;
    Clock::time_point lastReport = Clock::now();
    Clock::time_point lastObstacleCheck = lastReport;
    std::vector<DeviceInfo> pending; ///< The beginning of the next reading.
    Reading lastReading;
    const ChangeHandler handleChange;
    bool isNew = false; ///< The last reading.
    TaskRun child;
};

/// The time in so many seconds; infinity is allowed.
DeviceClient::Clock::time_point timeAfter(double seconds);

} // namespace vykeldev

#endif
