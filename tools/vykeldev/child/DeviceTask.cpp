#include "child/DeviceTask.h"

#include "child/Enumerator.h"
#include "output/Failures.h"
#include <thread>

namespace vykeldev {
namespace {

/// The failure of a list, from the exception that is being handled. One without a remedy is a plug-in's.
Failure listFailure() {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure;
    } catch (...) {
        Failure failure = currentFailure();
        if (!failure.remedy.empty())
            return failure;
        return {std::string("a plug-in let an exception out: ") + failure.what(),
                "It does so in every client, and ends those that do not catch it.",
                "Run 'vykeldev doctor --devices': it names the plug-in."};
    }
}

/// Refreshes a list that is stale and reads it, also when the refresh failed; other processes change numbers
/// and aliases also of a list that is not stale. Throws what plug-ins throw, and Failure.
Json look(vykel::IDeviceList& list, const DeviceRequest& request) {
    Json reading = {{"devices", Json::array()}, {"failure", nullptr}};
    vykel::StatusBlock status = vykel::makeStatusBlock();
    if (list.isStale())
        list.refresh(&status);
    if (status.code < 0)
        reading["failure"] = statusFailure("refreshing the devices", status);
    if (request.selection)
        reading["devices"] = readDevices(list, *request.selection);
    const bool isByName = request.selection && request.selection->isByName();
    reading["count"] = isByName ? reading["devices"].size() : list.getCount();
    return reading;
}

/// A device a line, because long lines are cut off.
void report(const Json& reading, Reporter& reporter) {
    for (const Json& device : reading["devices"])
        reporter.report({{"device", device}});
    reporter.report({{"count", reading["count"]}, {"failure", reading["failure"]}, {"step", ""}});
}

/// Returns the failure of the last refresh, or null.
Json readUntilEnough(vykel::IDeviceList& list, const DeviceRequest& request, Reporter& reporter) {
    for (Json last;;) {
        reporter.beginStep("refreshing the devices");
        Json now;
        try {
            now = look(list, request);
        } catch (...) {
            if (last.is_null())
                throw;
            now = last; // the trouble may pass
            now["failure"] = listFailure();
        }
        if (now != last)
            report(now, reporter);
        last = std::move(now);
        if (last["count"] >= request.enough)
            return last["failure"];
        reporter.beginStep("");
        std::this_thread::sleep_for(std::chrono::duration<double>(request.interval));
    }
}

/// The child's side.
void runClient(const std::vector<std::string>& arguments, Reporter& reporter) {
    const auto request = Json::parse(arguments.at(0)).get<DeviceRequest>();
    reporter.beginStep("loading the plug-ins");
    const Enumerator enumerator(request.library);
    const vykel::DeviceListPtr list = enumerator.makeList();
    try {
        const Json failure = readUntilEnough(*list, request, reporter);
        if (request.edit && !failure.is_null())
            throw failure.get<Failure>(); // numbers of devices that are missing now would seem to be free
        if (request.edit)
            editDevices(*list, *request.edit, [&](const DeviceChange& change) {
                reporter.report({{"change", change}});
            });
        reporter.beginStep("unloading the plug-ins");
    } catch (...) {
        throw listFailure(); // a plug-in's exception must not outlive its plug-in's code
    }
}

} // namespace

const ChildTask deviceTask = {"devices", runClient};

} // namespace vykeldev
