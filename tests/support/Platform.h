#ifndef TESTS_PLATFORM_H
#define TESTS_PLATFORM_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The functions of the tests that differ between the two builds.
namespace vykeltest {

/// Sets a variable for this process and the children started later.
void setEnvironment(const char* name, const std::string& value);

struct MachineRoot {
    std::filesystem::path folder; ///< the common data folder of the machine
    std::string name;             ///< its name for the system, in UTF-8
};

/// Makes this process use the machine of that name, which is created when it is missing.
MachineRoot enterMachine(const std::string& id);
/// Removes the machine; this process uses the real one again.
void leaveMachine(const std::string& id);

std::uint32_t processId();

/// The folder of the test programs and the built libraries.
std::filesystem::path programFolder();
extern const char* const libraryFile; ///< the library under test
extern const char* const pluginExtension;

/// Runs a built program to its end. `arguments` are quoted as for a shell; standard error is that of this
/// program.
struct ProgramResult {
    int exitCode;
    std::string output; ///< its standard output
};
ProgramResult runProgram(const std::string& name, const std::string& arguments);

/// The fake plug-ins that differ only in the place of their C++ runtime.
std::vector<std::string> pluginsByRuntime();

/// Raises a structured exception of the system, on the host what stands for one.
void raiseStructuredException(std::uint32_t code);
/// Whether such an exception leaves `body`.
bool passesOn(const std::function<void()>& body);

/// This test program as a second process of the same machine. It runs the function of the role.
class ChildProcess {
public:
    explicit ChildProcess(const std::string& role); ///< Throws std::system_error when it cannot be started.
    /// Waits for its end. Returns 0 when it ended well.
    int wait();
    /// Kills it and waits for its end.
    void kill();

private:
    std::intptr_t process;
};

/// What a child process does; returns its exit code. A test program that starts children defines roles.
using Role = int (*)();
struct NamedRole {
    NamedRole(const char* name, Role role);
};

} // namespace vykeltest

#endif
