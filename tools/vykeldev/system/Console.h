#ifndef VYKELDEV_SYSTEM_CONSOLE_H
#define VYKELDEV_SYSTEM_CONSOLE_H

#include "vytpl/NonCopyable.h"
#include <chrono>
#include <string>
#include <vector>

/// The terminal that this program is started from.
namespace vykeldev {

/// The arguments of the process in UTF-8, without the program's name.
std::vector<std::string> commandLineArguments(int argc, const char* const* argv);

/// Whether standard error is a terminal.
bool isErrorTerminal() noexcept;

/// Makes the console show UTF-8 while it lives. One object, for the life of the tool.
class Console : private vytpl::NonCopyableT<Console> {
public:
    Console() noexcept;
    ~Console();

    /// Whether the stream is a terminal that shows colour, and NO_COLOR does not forbid it.
    const bool colourOnOutput;
    const bool colourOnError;

private:
    [[maybe_unused]] unsigned savedCodePage = 0; // the host has none
};

/// While it lives, the first Ctrl-C (or whatever else asks this process to end) does not end the process.
/// waitFor reports it, so that the tool can tidy up first. The second Ctrl-C terminates the process as usual,
/// in case a plug-in hangs. One object at a time, used by one thread.
class StopRequest : private vytpl::NonCopyableT<StopRequest> {
public:
    /// Throws Failure when the system refuses.
    StopRequest();
    ~StopRequest();

    /// Sleeps for `time`, or until this process is asked to end. Returns whether it was asked, also before
    /// the call; on the host also when nobody reads standard output any more.
    bool waitFor(std::chrono::milliseconds time) noexcept;
};

/// Whether a write that has just failed did so because the reader of the pipe has gone.
bool isReaderGone() noexcept;

} // namespace vykeldev

#endif
