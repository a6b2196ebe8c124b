#include "support/Platform.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <winhost/faults.h>

namespace vykeltest {

const char* const libraryFile = "libvykeldevenum.so";
const char* const pluginExtension = ".so";

void setEnvironment(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}

MachineRoot enterMachine(const std::string& id) {
    const auto root = std::filesystem::temp_directory_path() / id;
    std::filesystem::create_directories(root / "c" / "Data");
    setEnvironment("WINHOST_ROOT", root.string());
    return {root / "c" / "Data", "C:\\Data"};
}

void leaveMachine(const std::string& id) {
    std::error_code ignored;
    std::filesystem::remove_all(std::filesystem::temp_directory_path() / id, ignored);
}

std::uint32_t processId() {
    return static_cast<std::uint32_t>(::getpid());
}

std::filesystem::path programFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

ProgramResult runProgram(const std::string& name, const std::string& arguments) {
    ProgramResult result{-1, {}};
    const std::string command = "'" + (programFolder() / name).string() + "' " + arguments;
    if (std::FILE* const pipe = ::popen(command.c_str(), "r")) {
        for (int byte = std::getc(pipe); byte != EOF; byte = std::getc(pipe))
            result.output += static_cast<char>(byte);
        result.exitCode = WEXITSTATUS(::pclose(pipe));
    }
    return result;
}

std::vector<std::string> pluginsByRuntime() {
    return {"fake_plugin", "fake_plugin_own_runtime"};
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

ChildProcess::ChildProcess(const std::string& role) {
    setEnvironment("VYKEL_TEST_ROLE", role);
    char name[] = "child";
    char* arguments[] = {name, nullptr};
    pid_t child = -1;
    const int error = ::posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments, environ);
    setEnvironment("VYKEL_TEST_ROLE", "");
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "starting role " + role);
    process = child;
}

int ChildProcess::wait() {
    int status = -1;
    ::waitpid(static_cast<pid_t>(process), &status, 0);
    return status;
}

void ChildProcess::kill() {
    ::kill(static_cast<pid_t>(process), SIGKILL);
    wait();
}

} // namespace vykeltest
