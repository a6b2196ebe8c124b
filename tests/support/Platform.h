#ifndef TESTS_PLATFORM_H
#define TESTS_PLATFORM_H

#include <filesystem>
#include <future>
#include <string>

/// What the tests need of the system.
namespace vykeltest {

constexpr const char* libraryFile = LIBRARY_FILE; ///< the library under test
#ifdef _WIN32
constexpr const char* pluginExtension = ".dll";
constexpr const char* programExtension = ".exe";
#else
constexpr const char* pluginExtension = ".so";
constexpr const char* programExtension = "";
#endif

/// Sets a variable for this process and the children started later.
void setEnvironment(const char* name, const std::string& value);

struct MachineRoot {
    std::filesystem::path folder; ///< the common data folder of the machine
    std::string name;             ///< its name for the system, in UTF-8
};

/// Makes this process use the machine of that name.
MachineRoot enterMachine(const std::string& id);
/// Removes the machine; this process uses the real one again.
void leaveMachine(const std::string& id);

/// The folder of the test programs and the built libraries.
std::filesystem::path programFolder();
struct ProgramResult {
    int exitCode;       ///< -1: it could not be started, or was killed
    std::string output; ///< its standard output
};
/// Starts a built program. `arguments` are quoted as for a shell; standard error is that of this program. On
/// Windows the program inherits the files that this one has open just then.
std::future<ProgramResult> startProgram(const std::string& name, const std::string& arguments);
/// Runs a built program to its end.
ProgramResult runProgram(const std::string& name, const std::string& arguments);

} // namespace vykeltest

#endif
