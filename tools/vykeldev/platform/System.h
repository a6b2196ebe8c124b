#ifndef VYKELDEV_PLATFORM_SYSTEM_H
#define VYKELDEV_PLATFORM_SYSTEM_H

#include <string>
#include <vector>
#include <windows.h>

/// What differs between Windows and the host: SystemWindows.cpp and SystemHost.cpp.
namespace vykeldev {

/// The arguments of the process in UTF-8, without the program's name.
std::vector<std::string> commandLineArguments(int argc, const char* const* argv);

/// The file name of the library as this system's build calls it.
extern const char* const libraryFileName;

/// The system's text for an error, UTF-8, without a line end; empty when there is none.
std::string systemErrorText(DWORD error);

/// Makes the console show UTF-8 while it lives. One object, for the life of the tool.
class Console {
public:
    Console() noexcept;
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    /// True when the stream is a terminal that shows colour, and NO_COLOR does not forbid it.
    bool colourOnOutput() const noexcept { return colourOnOutput_; }
    bool colourOnError() const noexcept { return colourOnError_; }

private:
    bool colourOnOutput_;
    bool colourOnError_;
    [[maybe_unused]] unsigned savedCodePage_ = 0; // the host has none
};

} // namespace vykeldev

#endif
