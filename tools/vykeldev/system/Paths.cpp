#include "system/Paths.h"

#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Text.h"

namespace vykeldev {

std::string absolutePath(const std::string& path) {
    const WideString given = toWide(path);
    const WideString absolute = pathFrom([&given](LPWSTR buffer, DWORD size) {
        return GetFullPathNameW(given.c_str(), size, buffer, nullptr);
    });
    if (absolute.empty())
        throw systemFailure("making the path '" + printable(path) + "' absolute", GetLastError(),
                            "Give the whole path.");
    return toUtf8(absolute);
}

bool isAbsolutePath(const std::string& path) noexcept {
    const bool drive = path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
    return drive || path.substr(0, 2) == "\\\\" || path.substr(0, 1) == "/";
}

bool hasAttribute(const std::string& path, DWORD attributes) {
    const DWORD found = GetFileAttributesW(toWide(path).c_str());
    return found != INVALID_FILE_ATTRIBUTES && (found & attributes) != 0;
}

std::string pathProblem(const std::string& path) {
    if (path.empty())
        return "the path is empty";
    if (!isAbsolutePath(path))
        return "the path is not absolute"; // which file it means depends on the client
    if (isFolder(path))
        return "this is a folder";
    return GetFileAttributesW(toWide(path).c_str()) == INVALID_FILE_ATTRIBUTES ? "there is no such file" : "";
}

} // namespace vykeldev
