#include "support/Platform.h"

#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <windows.h>
#ifdef _WIN32
#include <process.h>
#define popen _popen
#define pclose _pclose
#define PIPE_MODE "rb"
#else
#define PIPE_MODE "r"
#include <sys/wait.h>
#include <unistd.h>
#include <winhost/faults.h>
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

#else

void setEnvironment(const char* name, const std::string& value) {
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

void killThisProcess() {
    ::kill(::getpid(), SIGKILL);
    std::abort(); // not reached
}

void raiseStructuredException(std::uint32_t code) {
    throw winhost::StructuredException{code};
}

bool passesOn(const std::function<void()>& body) {
    try {
        body();
    } catch (const winhost::StructuredException&) {
        return true;
    }
    return false;
}

#endif

void leaveMachine(const std::string& id) {
    leaveRegistry(id);
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::temp_directory_path() / id, ignored);
}

static std::filesystem::path programPath() {
    WCHAR path[1024] = {};
    return {path, path + GetModuleFileNameW(nullptr, path, 1024)};
}

std::filesystem::path programFolder() {
    return programPath().parent_path();
}

ProgramResult runProgram(const std::string& name, const std::string& arguments) {
    const std::string command = '"' + (programFolder() / (name + programExtension)).string() + "\" ";
    ProgramResult result{-1, {}};
    if (std::FILE* const pipe = popen(shellCommand(command + arguments).c_str(), PIPE_MODE)) {
        for (int byte = std::getc(pipe); byte != EOF; byte = std::getc(pipe))
            result.output += static_cast<char>(byte);
        result.exitCode = exitCodeOf(pclose(pipe));
    }
    return result;
}

static std::map<std::string, Role>& roles() {
    static std::map<std::string, Role> known;
    return known;
}

NamedRole::NamedRole(const char* name, Role role) {
    roles()[name] = role;
}

#ifdef _WIN32
static std::future<int> startRole(const std::string& name) {
    const std::intptr_t child =
        _spawnl(_P_NOWAIT, programPath().string().c_str(), "child", name.c_str(), nullptr);
    return std::async(std::launch::async, [child] {
        int exitCode = -1;
        _cwait(&exitCode, child, 0);
        return exitCode;
    });
}
#else
static std::future<int> startRole(const std::string& name) {
    const auto run = [name] { return runProgram(programPath().stem().string(), name).exitCode; };
    return std::async(std::launch::async, run);
}
#endif

int runRole(const std::string& name) {
    return startRole(name).get();
}

std::vector<std::future<int>> startRoles(const std::string& name, std::size_t count) {
    std::vector<std::future<int>> children(count);
    for (std::future<int>& child : children)
        child = startRole(name);
    return children;
}

} // namespace vykeltest

int main(int argc, char** argv) {
    const auto role = vykeltest::roles().find(argv[argc - 1]);
    if (role != vykeltest::roles().end())
        return role->second();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
