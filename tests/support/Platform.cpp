#include "support/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <windows.h>
#ifdef _WIN32
#define popen _popen
#define pclose _pclose
#define PIPE_MODE "rb"
#else
#define PIPE_MODE "r"
#include <sys/wait.h>
#endif

namespace vykeltest {

#ifdef _WIN32

void setEnvironment(const char* name, const std::string& value) {
    _putenv((std::string(name) + "=" + value).c_str());
}

/// Another registry can be set only for this process. Tests that start other programs run on a system of
/// their own instead; this variable says so.
static bool ownsTheSystem() {
    return std::getenv("VYKEL_TEST_OWN_SYSTEM") != nullptr;
}

MachineRoot enterMachine(const std::string& id) {
    HKEY registry = nullptr;
    if (!ownsTheSystem() &&
        (RegCreateKeyA(HKEY_CURRENT_USER, ("Software\\vykel-tests\\" + id).c_str(), &registry) != 0 ||
         RegOverridePredefKey(HKEY_LOCAL_MACHINE, registry) != 0))
        std::abort();
    RegCloseKey(registry);
    const auto folder = std::filesystem::temp_directory_path() / id / "Data";
    return {folder, folder.u8string()};
}

static void leaveRegistry(const std::string& id) {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    if (ownsTheSystem())
        RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Morvance");
    RegDeleteTreeA(HKEY_CURRENT_USER, ("Software\\vykel-tests\\" + id).c_str());
}

/// The shell takes the outer quotes away.
static std::string shellCommand(const std::string& command) {
    return '"' + command + '"';
}

static int exitCodeOf(int status) {
    return status;
}

#else

void setEnvironment(const char* name, const std::string& value) {
    if (value.empty()) // as on Windows
        ::unsetenv(name);
    else
        ::setenv(name, value.c_str(), 1);
}

MachineRoot enterMachine(const std::string& id) {
    const auto root = std::filesystem::temp_directory_path() / id;
    setEnvironment("WINHOST_ROOT", root.string());
    return {root / "c" / "Data", "C:\\Data"};
}

static void leaveRegistry(const std::string&) {} // it is in the machine's folder

/// A shell that replaces itself prints nothing when the program is killed.
static std::string shellCommand(const std::string& command) {
    return "exec " + command;
}

static int exitCodeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

void leaveMachine(const std::string& id) {
    leaveRegistry(id);
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::temp_directory_path() / id, ignored);
}

std::filesystem::path programFolder() {
    WCHAR path[1024] = {};
    GetModuleFileNameW(nullptr, path, 1024);
    return std::filesystem::path(path).parent_path();
}

std::future<ProgramResult> startProgram(const std::string& name, const std::string& arguments) {
    const std::string command = '"' + (programFolder() / (name + programExtension)).string() + "\" ";
    std::FILE* const pipe = popen(shellCommand(command + arguments).c_str(), PIPE_MODE);
    return std::async(std::launch::async, [pipe] {
        ProgramResult result{-1, {}};
        for (int byte = 0; pipe != nullptr && (byte = std::getc(pipe)) != EOF;)
            result.output += static_cast<char>(byte);
        if (pipe != nullptr)
            result.exitCode = exitCodeOf(pclose(pipe));
        return result;
    });
}

ProgramResult runProgram(const std::string& name, const std::string& arguments) {
    return startProgram(name, arguments).get();
}

} // namespace vykeltest
