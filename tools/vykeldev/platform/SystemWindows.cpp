#include "platform/System.h"

#include "support/Text.h"
#include "vybase/owners.h"
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <shellapi.h>

namespace vykeldev {
namespace {

/// Turns on the escape sequences of a console; false when `handle` is none, or is too old for them.
bool enableColour(DWORD handle) noexcept {
    DWORD mode = 0;
    const HANDLE console = GetStdHandle(handle);
    return std::getenv("NO_COLOR") == nullptr && GetConsoleMode(console, &mode) &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

} // namespace

const char* const libraryFileName = "vykeldevenum.dll";

std::vector<std::string> commandLineArguments(int, const char* const*) {
    int count = 0;
    const vybase::LocalMemory<LPWSTR> arguments(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> result;
    for (int i = 1; arguments && i < count; ++i)
        result.push_back(toUtf8(arguments.get()[i]));
    return result;
}

std::string systemErrorText(DWORD error) {
    LPWSTR text = nullptr;
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                            FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    const vybase::LocalMemory<WCHAR> owner(text);
    return length == 0 ? std::string() : trimmed(toUtf8(WideString(text, length)));
}

Console::Console() noexcept
    : colourOnOutput_(enableColour(STD_OUTPUT_HANDLE)), colourOnError_(enableColour(STD_ERROR_HANDLE)),
      savedCodePage_(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    // Without a buffer the runtime hands a console single bytes, which it cannot show as UTF-8.
    static char outputBuffer[1 << 16];
    std::setvbuf(stdout, outputBuffer, _IOFBF, sizeof outputBuffer);
}

Console::~Console() {
    std::cout.flush();
    if (savedCodePage_ != 0)
        SetConsoleOutputCP(savedCodePage_);
}

} // namespace vykeldev
