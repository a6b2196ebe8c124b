#include "winhost/faults.h"

#include "faultCheck.h"
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <string>
#include <unistd.h>

namespace winhost {

std::atomic<int> armedFaults{0};

namespace {

struct CallTraits {
    const char* name;
    DWORD naturalError;
};

constexpr CallTraits callTraits[] = {
#define WINHOST_TRAITS(name, error) {#name, error},
    WINHOST_CALLS(WINHOST_TRAITS)
#undef WINHOST_TRAITS
        {"Any", ERROR_GEN_FAILURE}};

std::mutex faultsMutex; // guards the list of armed faults and their counts
ScopedFault* newestFault = nullptr;
std::atomic<std::ptrdiff_t> resources{0};

[[noreturn]] void rejectEnvironment(const std::string& text) {
    std::fprintf(stderr, "WINHOST_FAULT: '%s' is not <call or Any>:<n>:<fail|onward|kill>[:<error>]\n",
                 text.c_str());
    std::abort();
}

Fault parseFault(const std::string& text) {
    char name[64] = "", effect[16] = "";
    unsigned long nth = 0;
    unsigned error = 0;
    const int fields = std::sscanf(text.c_str(), "%63[^:]:%lu:%15[^:]:%u", name, &nth, effect, &error);
    if (fields < 3 || nth == 0 || fields - 1 != std::count(text.begin(), text.end(), ':'))
        rejectEnvironment(text);
    const auto* const call =
        std::find_if(std::begin(callTraits), std::end(callTraits),
                     [&](const CallTraits& traits) { return name == std::string(traits.name); });
    const std::string effects[] = {"fail", "onward", "kill"};
    const auto* const found = std::find(std::begin(effects), std::end(effects), effect);
    if (call == std::end(callTraits) || found == std::end(effects))
        rejectEnvironment(text);
    return {static_cast<Call>(call - callTraits), nth, static_cast<Effect>(found - effects), error};
}

/// Appends the name of a call that a fault strikes to the file that WINHOST_FAULT_LOG names.
void logStrike(const char* name) noexcept {
    const char* const path = std::getenv("WINHOST_FAULT_LOG");
    const int file = path != nullptr ? ::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666) : -1;
    if (file < 0)
        return;
    ::dprintf(file, "%s\n", name);
    ::close(file);
}

/// The fault that WINHOST_FAULT names, armed for the life of the process.
struct EnvironmentFault {
    EnvironmentFault() {
        if (const char* text = std::getenv("WINHOST_FAULT"))
            fault.emplace(parseFault(text));
    }
    std::optional<ScopedFault> fault;
};
const EnvironmentFault environmentFault;

} // namespace

ScopedFault::ScopedFault(const Fault& armed) noexcept : fault(armed) {
    const std::lock_guard<std::mutex> guard(faultsMutex);
    next = newestFault;
    newestFault = this;
    armedFaults.fetch_add(1, std::memory_order_release);
}

ScopedFault::~ScopedFault() {
    const std::lock_guard<std::mutex> guard(faultsMutex);
    ScopedFault** link = &newestFault;
    while (*link != this)
        link = &(*link)->next;
    *link = next;
    armedFaults.fetch_sub(1, std::memory_order_release);
}

std::size_t ScopedFault::struck() const noexcept {
    const std::lock_guard<std::mutex> guard(faultsMutex);
    return failures;
}

std::size_t ScopedFault::counted() const noexcept {
    const std::lock_guard<std::mutex> guard(faultsMutex);
    return calls;
}

DWORD armedFault(Call call) noexcept {
    const std::lock_guard<std::mutex> guard(faultsMutex);
    DWORD error = 0;
    for (ScopedFault* armed = newestFault; armed != nullptr; armed = armed->next) {
        const Fault& fault = armed->fault;
        if (fault.call != call && (fault.call != Call::Any || call == Call::malloc))
            continue;
        ++armed->calls;
        const bool strikes =
            fault.effect == Effect::FailOnward ? armed->calls >= fault.nth : armed->calls == fault.nth;
        if (!strikes)
            continue;
        logStrike(callTraits[static_cast<std::size_t>(call)].name);
        if (fault.effect == Effect::Kill)
            ::kill(::getpid(), SIGKILL);
        ++armed->failures;
        if (error == 0)
            error = fault.error != 0 ? fault.error : callTraits[static_cast<std::size_t>(call)].naturalError;
    }
    return error;
}

void countResources(int change) noexcept {
    resources.fetch_add(change, std::memory_order_relaxed);
}

std::ptrdiff_t openResources() noexcept {
    return resources.load(std::memory_order_relaxed);
}

} // namespace winhost
