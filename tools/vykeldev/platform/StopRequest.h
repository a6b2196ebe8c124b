#ifndef VYKELDEV_PLATFORM_STOPREQUEST_H
#define VYKELDEV_PLATFORM_STOPREQUEST_H

#include <chrono>

/// StopRequestWindows.cpp and StopRequestHost.cpp.
namespace vykeldev {

/// While it lives, the first Ctrl-C (or whatever else asks this process to end) does not end it but is told
/// by waitFor, so that the tool can tidy up before; the second one ends it as ever, in case a plug-in hangs.
/// One object at a time, used by one thread.
class StopRequest {
public:
    /// Throws Failure when the system refuses.
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    /// Sleeps for `time`, or until this process is asked to end. True when it was asked, also before the
    /// call; on the host also when nobody reads standard output any more.
    bool waitFor(std::chrono::milliseconds time) noexcept;
};

/// True when a write that has just failed did so because the reader of the pipe has gone.
bool isReaderGone() noexcept;

} // namespace vykeldev

#endif
