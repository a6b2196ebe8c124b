#include "child/DeviceClient.h"

#include "ConfigurationFolder.h"
#include "errors/Exception.h"
#include "machine/Cause.h"
#include "machine/Locks.h"
#include "output/Failures.h"
#include "system/DisplayText.h"
#include <algorithm>
#include <iostream>
#include <utility>

namespace vykeldev {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds minBlockedTime(250);
constexpr std::chrono::seconds noticeDelay(2);

/// The path of a lock file that is locked, or an empty text.
std::string heldLock() {
    try {
        for (const char* const name : {"DeviceList.lck", "vykel.lck"})
            if (std::string path = vykel::getConfigurationFolder() + name; isLocked(path))
                return path;
    } catch (const vyerr::Exception&) {
        // There is no such folder, so there is no lock.
    }
    return {};
}

} // namespace

DeviceClient::DeviceClient(const DeviceRequest& request, const Context& context, ChangeHandler onChange)
    : showsObstacle(!context.quiet && (context.verbose || isErrorTerminal())),
      handleChange(std::move(onChange)),
      child(deviceTask, {textOf(request, -1)}, [this](const Json& report) { take(report); }) {}

DeviceClient::Event DeviceClient::next(Clock::time_point deadline) {
    for (;;) {
        if (std::exchange(isNew, false))
            return Event::Read;
        if (child.isDone())
            return Event::Done;
        const Clock::time_point now = Clock::now();
        if (now >= deadline)
            return Event::TimeOver;
        const Clock::duration left = std::min<Clock::duration>(deadline - now, TaskRun::pollInterval);
        child.listen(std::chrono::ceil<milliseconds>(left));
        showObstacle();
    }
}

void DeviceClient::await(Event wanted, Clock::time_point deadline) {
    if (next(deadline) == wanted)
        return;
    const std::string cause = obstacle();
    throw Failure("time is over" + (cause.empty() ? cause : ": " + cause), "",
                  "Run 'vykeldev doctor': it names the plug-in, or the lock that is held. Or give more time "
                  "with --timeout.");
}

std::string DeviceClient::obstacle() const {
    if (child.step().empty() || Clock::now() - lastReport < minBlockedTime)
        return {};
    const std::string lock = heldLock();
    return lock.empty() ? "a plug-in is at work (" + child.step() + ")"
                        : "'" + printable(lock) + "' is locked, by another client or a plug-in in this one";
}

void DeviceClient::take(const Json& report) {
    lastReport = Clock::now();
    if (report.contains("device"))
        pending.push_back(report["device"].get<DeviceInfo>());
    if (report.contains("change"))
        handleChange(report["change"]);
    if (!report.contains("count"))
        return;
    lastReading = {report["count"], std::exchange(pending, {}), std::nullopt};
    if (!report["failure"].is_null())
        lastReading.failure = withCause(report["failure"]);
    isNew = child.isComplete();
}

void DeviceClient::showObstacle() {
    if (!showsObstacle || Clock::now() - std::max(lastReport, lastObstacleCheck) < noticeDelay)
        return;
    lastObstacleCheck = Clock::now();
    const std::string text = obstacle();
    if (!text.empty() && text != shownObstacle)
        std::cerr << "vykeldev: waiting: " << text << '\n';
    shownObstacle = text;
}

DeviceClient::Clock::time_point timeAfter(double seconds) {
    constexpr double longest = 1e9; // a clock's count has an end
    return seconds < longest
               ? DeviceClient::Clock::now() + std::chrono::duration_cast<DeviceClient::Clock::duration>(
                                                  std::chrono::duration<double>(seconds))
               : DeviceClient::Clock::time_point::max();
}

} // namespace vykeldev
