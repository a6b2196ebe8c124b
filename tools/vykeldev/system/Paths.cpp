#include "system/Paths.h"

#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Text.h"

namespace vykeldev {

std::string absolutePath(const std::string& path) {
    WideString absolute(32768, 0); // no path is longer
    const DWORD length =
        GetFullPathNameW(toWide(path).c_str(), static_cast<DWORD>(absolute.size()), absolute.data(), nullptr);
    if (length == 0 || length >= absolute.size()) {
        throw systemFailure("making the path '" + printable(path) + "' absolute", GetLastError(),
                            "Give the whole path.");
    }
    absolute.resize(length);
    return toUtf8(absolute);
}

bool isAbsolutePath(const std::string& path) noexcept {
    const bool drive = path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
    return drive || path.substr(0, 2) == "\\\\" || path.substr(0, 1) == "/";
}

bool isFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(toWide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
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
