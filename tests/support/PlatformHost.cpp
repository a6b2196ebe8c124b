#include "support/Platform.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <winhost/faults.h>

namespace vykeltest {

const char* const libraryFile = "libvykeldevenum.so";
const char* const pluginExtension = ".so";
const char* const programExtension = "";

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

ProgramResult runCommand(const std::string& command) {
    ProgramResult result{-1, {}};
    if (std::FILE* const pipe = ::popen(("exec " + command).c_str(), "r")) {
        for (int byte = std::getc(pipe); byte != EOF; byte = std::getc(pipe))
            result.output += static_cast<char>(byte);
        const int status = ::pclose(pipe);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    return result;
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

} // namespace vykeltest
