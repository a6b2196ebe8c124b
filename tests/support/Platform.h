#ifndef TESTS_PLATFORM_H
#define TESTS_PLATFORM_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What the tests do differently on the two builds.
namespace vykeltest {

/// Sets a variable for this process and the children started later.
void setEnvironment(const char* name, const std::string& value);

struct MachineRoot {
    std::filesystem::path folder; ///< a folder of the machine's own, for its common data
    std::string name;             ///< what the system calls that folder, in UTF-8
};

/// Makes this process see the machine of that name: made when it does not exist yet.
MachineRoot enterMachine(const std::string& id);
/// Takes the machine's registry away and comes back to the real one.
void leaveMachine(const std::string& id);

std::uint32_t processId();

/// Where the test programs and the libraries are built.
std::filesystem::path programFolder();
extern const char* const libraryFile; ///< the library under test
extern const char* const pluginExtension;

/// Runs a built program to its end. `arguments` as a shell takes them; the standard error is this program's.
struct ProgramResult {
    int exitCode;
    std::string output; ///< what it wrote to standard output
};
ProgramResult runProgram(const std::string& name, const std::string& arguments);

/// The fake plug-ins that differ only in where their C++ runtime is.
std::vector<std::string> pluginsByRuntime();

/// Raises a structured exception of the system, on the host its stand-in; and whether `body` lets one out
/// that is not for exhausted memory.
void raiseStructuredException(std::uint32_t code);
bool passesOn(const std::function<void()>& body);

/// This test program once more, as another process of the same machine: it runs runRole(role).
class ChildProcess {
public:
    explicit ChildProcess(const std::string& role); ///< Throws std::system_error when it cannot be started.
    /// Its exit code.
    int wait();
    /// Ends it at once, as a power cut would, and waits for that.
    void kill();

private:
    std::intptr_t process;
};

/// What a child process does; returns its exit code. Each test program that starts children defines roles.
using Role = int (*)();
struct NamedRole {
    NamedRole(const char* name, Role role);
};

} // namespace vykeltest

#endif
