#include "platform/System.h"

#include "support/Text.h"
#include "vybase/owners.h"
#include <cstdlib>
#include <unistd.h>

namespace vykeldev {
namespace {

bool showsColour(int stream) noexcept {
    return std::getenv("NO_COLOR") == nullptr && isatty(stream) == 1;
}

} // namespace

const char* const libraryFileName = "libvykeldevenum.so";

std::vector<std::string> commandLineArguments(int argc, const char* const* argv) {
    return std::vector<std::string>(argv + 1, argv + argc);
}

std::string systemErrorText(DWORD error) {
    char* text = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                            FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    const vybase::LocalMemory<char> owner(text);
    return length == 0 ? std::string() : trimmed(std::string(text, length));
}

Console::Console() noexcept
    : colourOnOutput_(showsColour(STDOUT_FILENO)), colourOnError_(showsColour(STDERR_FILENO)) {}

Console::~Console() = default;

} // namespace vykeldev
