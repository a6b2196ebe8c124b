#ifndef VYKELDEV_SYSTEM_CONSOLE_H
#define VYKELDEV_SYSTEM_CONSOLE_H

#include "vytpl/NonCopyable.h"
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

/// While it lives, the first Ctrl-C (or whatever else asks this process to end) only makes a request, so that
/// the tool can tidy up first. The second one terminates the process as usual, in case something hangs. One
/// object, for the life of the tool.
class StopRequest : private vytpl::NonCopyableT<StopRequest> {
public:
    /// Throws Failure when the system refuses.
    StopRequest();
    ~StopRequest();

    /// Whether this process was asked to end. False without an object.
    static bool isMade() noexcept;
};

/// Whether nobody reads standard output any more. On Windows only a write that fails shows that.
bool isReaderGone() noexcept;

} // namespace vykeldev

#endif
