#include "support/Platform.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <windows.h>

namespace vykeltest {

const char* const libraryFile = "vykeldevenum.dll";
const char* const pluginExtension = ".dll";
const char* const programExtension = ".exe";

void setEnvironment(const char* name, const std::string& value) {
    _putenv((std::string(name) + "=" + value).c_str());
}

/// Another registry can be set only for this process. Tests that start other programs run on a system of
/// their own instead; this variable says so.
static bool ownsTheSystem() {
    return std::getenv("VYKEL_TEST_OWN_SYSTEM") != nullptr;
}

static void exchangeRegistry(const std::string& id) {
    const std::string key = "Software\\vykel-tests\\" + id;
    HKEY registry = nullptr;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &registry,
                        nullptr) != ERROR_SUCCESS ||
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, registry) != ERROR_SUCCESS)
        std::abort();
    RegCloseKey(registry);
}

MachineRoot enterMachine(const std::string& id) {
    if (!ownsTheSystem())
        exchangeRegistry(id);
    const auto folder = std::filesystem::temp_directory_path() / id / "Data";
    std::filesystem::create_directories(folder);
    return {folder, folder.u8string()};
}

void leaveMachine(const std::string& id) {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    if (ownsTheSystem())
        RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Morvance");
    RegDeleteTreeA(HKEY_CURRENT_USER, ("Software\\vykel-tests\\" + id).c_str());
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::temp_directory_path() / id, ignored);
}

ProgramResult runCommand(const std::string& command) {
    ProgramResult result{-1, {}};
    if (std::FILE* const pipe = _popen(('"' + command + '"').c_str(), "rb")) {
        for (int byte = std::getc(pipe); byte != EOF; byte = std::getc(pipe))
            result.output += static_cast<char>(byte);
        result.exitCode = _pclose(pipe);
    }
    return result;
}

void killThisProcess() {
    TerminateProcess(GetCurrentProcess(), 1);
    std::abort(); // not reached
}

void raiseStructuredException(std::uint32_t code) {
    RaiseException(code, 0, 0, nullptr);
}

// GCC's catch clauses do not see structured exceptions, so a handler ends the search for one.
static jmp_buf escape;
bool passesOn(const std::function<void()>& body) {
    const auto handler = [](EXCEPTION_POINTERS*) -> LONG { longjmp(escape, 1); };
    const auto previous = SetUnhandledExceptionFilter(handler);
    const bool passed = setjmp(escape) != 0;
    if (!passed)
        body();
    SetUnhandledExceptionFilter(previous);
    return passed;
}

} // namespace vykeltest
