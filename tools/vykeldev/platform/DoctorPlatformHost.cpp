#include "platform/DoctorPlatform.h"

#include "support/Files.h"
#include "support/Text.h"
#include <cstdlib>
#include <dlfcn.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace vykeldev::doctor {
namespace {

constexpr const char* standardFolders = "/lib/x86_64-linux-gnu:/usr/lib/x86_64-linux-gnu:/usr/local/lib:"
                                        "/lib64:/usr/lib64:/lib:/usr/lib";

bool isLoaded(const std::string& name) noexcept {
    void* const module = dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (module != nullptr)
        dlclose(module);
    return module != nullptr;
}

std::optional<std::string> findInFolders(const std::string& name, const std::string& folders,
                                         const std::string& origin) {
    std::istringstream list(folders);
    for (std::string folder; std::getline(list, folder, ':');) {
        for (const std::string& variable : {std::string("$ORIGIN"), std::string("${ORIGIN}")})
            if (folder.rfind(variable, 0) == 0)
                folder.replace(0, variable.size(), origin);
        const std::string path = folder.append("/").append(name);
        if (path.size() > name.size() + 1 && access(path.c_str(), F_OK) == 0)
            return path;
    }
    return std::nullopt;
}

} // namespace

LibraryImage readNativeImage(std::string_view bytes) {
    return readElfImage(bytes);
}

std::optional<std::string> findImport(const std::string& name, const LibraryImage& image,
                                      const std::string& folder) {
    if (name.find('/') != std::string::npos)
        return access(name.c_str(), F_OK) == 0 ? std::optional(name) : std::nullopt;
    if (isLoaded(name))
        return "";
    const char* const more = std::getenv("LD_LIBRARY_PATH");
    for (const std::string& folders : {image.searchPath, std::string(more != nullptr ? more : "")})
        if (auto path = findInFolders(name, folders, folder))
            return path;
    return findInFolders(name, standardFolders, folder) ? std::optional(std::string()) : std::nullopt;
}

bool isOrdinaryFile(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode); // one that is missing keeps nobody
}

std::string fileIdentity(const std::string&) {
    return {};
}

bool makeTemporaryFile(const std::string& path) {
    const bool made = openFile(path, GENERIC_WRITE, CREATE_NEW) != nullptr;
    return made && DeleteFileW(toWide(path).c_str()) != FALSE;
}

vykel::FileStream duplicateOutput() {
    return vykel::FileStream{fdopen(dup(STDOUT_FILENO), "w")};
}

void silenceCrashes() noexcept {
    const rlimit nothing = {0, 0};
    setrlimit(RLIMIT_CORE, &nothing);
}

bool isErrorTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

std::string systemVersion() {
    utsname system = {};
    uname(&system);
    return std::string(system.sysname) + " " + system.release;
}

std::string fileVersion(const std::string&) {
    return {};
}

} // namespace vykeldev::doctor
