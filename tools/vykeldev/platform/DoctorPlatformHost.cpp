#include "platform/DoctorPlatform.h"

#include "support/Files.h"
#include "support/Text.h"
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace vykeldev::doctor {
std::optional<LibraryImage> readNativeImage(std::string_view) {
    return std::nullopt;
}

std::optional<std::string> findImport(const std::string&) {
    return "";
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
