#include "support/Platform.h"

#include <gtest/gtest.h>
#include <map>
#include <windows.h>

namespace vykeltest {

static std::filesystem::path programPath() {
    WCHAR path[1024] = {};
    return {path, path + GetModuleFileNameW(nullptr, path, 1024)};
}

std::filesystem::path programFolder() {
    return programPath().parent_path();
}

ProgramResult runProgram(const std::string& name, const std::string& arguments) {
    return runCommand('"' + (programFolder() / (name + programExtension)).string() + "\" " + arguments);
}

static std::map<std::string, Role>& roles() {
    static std::map<std::string, Role> known;
    return known;
}

NamedRole::NamedRole(const char* name, Role role) {
    roles()[name] = role;
}

int runRole(const std::string& name) {
    return runProgram(programPath().stem().string(), name).exitCode;
}

std::vector<std::future<int>> startRoles(const std::string& name, std::size_t count) {
    std::vector<std::future<int>> children(count);
    for (std::future<int>& child : children)
        child = std::async(std::launch::async, runRole, name);
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
