#include "system/ToolCommand.h"

#include "system/Text.h"
#include <cstdlib>
#include <sstream>

namespace vykeldev {
namespace {

constexpr const char* toolName = "vykeldev";

/// Whether PATH names the folder, which ends in a separator. It has the spelling of PATH when the tool was
/// found there.
bool isOnPath(const std::string& folder) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string each; std::getline(folders, each, folder.front() == '/' ? ':' : ';');)
        if (each == folder || each + folder.back() == folder)
            return true;
    return false;
}

/// What to type to start this tool.
std::string makeCommand() {
    const std::string path = modulePath(nullptr);
    if (path.empty() || isOnPath(path.substr(0, path.find_last_of("\\/") + 1)))
        return toolName;
    return '"' + path + '"';
}

} // namespace

std::string modulePath(HMODULE module) {
    return toUtf8(
        pathFrom([module](LPWSTR buffer, DWORD size) { return GetModuleFileNameW(module, buffer, size); }));
}

std::string typeable(std::string text) {
    static const std::string command = makeCommand();
    const std::string mark = std::string("'") + toolName + ' ';
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += command.size())
        text.replace(++at, mark.size() - 2, command);
    return text;
}

} // namespace vykeldev
