#include "platform/Process.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/resource.h>
#include <unistd.h>
#if defined(VYKEL_SANITIZED)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // GCC brings no header for it
#endif

namespace vykeldev::check {
namespace {

std::uint64_t privateBytes() {
#if defined(VYKEL_SANITIZED)
    return __sanitizer_get_current_allocated_bytes(); // what is freed stays resident, in quarantine
#else
    std::uint64_t total = 0;
    std::uint64_t resident = 0;
    std::uint64_t shared = 0;
    std::ifstream("/proc/self/statm") >> total >> resident >> shared;
    return (resident - shared) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
#endif
}

} // namespace

Usage usageOfThisProcess() {
    const auto handles = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    return {privateBytes(), static_cast<std::uint64_t>(handles)};
}

void crashQuietly() noexcept {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

void endAtOnce() noexcept {
    _exit(0);
}

void unload(HMODULE library) noexcept {
    FreeLibrary(library);
}

} // namespace vykeldev::check
