#include "system/Console.h"
#include "system/Failure.h"
#include "system/Files.h"
#include "system/Process.h"
#include "system/System.h"
#include "system/Text.h"
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/wait.h>
#include <unistd.h>
#if defined(VYKEL_SANITIZED)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // GCC has no header for it
#endif

namespace vykeldev {
namespace {

Failure callFailure(const std::string& what) {
    return {what, std::strerror(errno), ""};
}

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

bool showsColour(int stream) noexcept {
    return std::getenv("NO_COLOR") == nullptr && isatty(stream) == 1;
}

[[noreturn]] void becomeTool(std::vector<std::string> arguments, int output, pid_t parent) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody else would end a child that hangs
    if (getppid() != parent)
        _exit(127);
    std::string program = "/proc/self/exe";
    std::vector<char*> pointers{program.data()};
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    execv(program.c_str(), pointers.data());
    _exit(127);
}

volatile std::sig_atomic_t stopRequested = 0; // a signal handler has no argument of ours

void askToStop(int signal) {
    stopRequested = 1;
    std::signal(signal, SIG_DFL); // the next one terminates the process
}

} // namespace

Usage usageOfThisProcess() {
    const auto handles = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    return {privateBytes(), static_cast<std::uint64_t>(handles)};
}

void suppressCrashDialogs() noexcept {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

void unload(HMODULE library) noexcept {
    FreeLibrary(library);
}

vybase::FileStream duplicateOutput() {
    // A process that a plug-in starts must not keep it open.
    return vybase::FileStream(fdopen(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "w"));
}

/// The child leads a process group of its own.
struct ChildProcess::State {
    vybase::FileStream output; // null when the child has closed it
    pid_t process = -1;
    int status = 0;
    bool ended = false;

    ~State() {
        if (process <= 0)
            return;
        kill(-process, SIGKILL);
        while (!ended && waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
    }
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) : state(std::make_unique<State>()) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw callFailure("a child process cannot be started");
    state->output.reset(fdopen(ends[0], "r"));
    const pid_t parent = getpid();
    state->process = fork();
    if (state->process == 0)
        becomeTool(arguments, ends[1], parent);
    close(ends[1]);
    if (state->process < 0)
        throw callFailure("a child process cannot be started");
    setpgid(state->process, state->process); // in both processes, whichever comes first
}

ChildProcess::~ChildProcess() = default;

bool ChildProcess::read(std::string& output, std::chrono::milliseconds time) {
    if (!state->output) {
        usleep(1000); // it has closed its output, so its end is near
        state->ended = waitpid(state->process, &state->status, WNOHANG) != 0;
        return !state->ended;
    }
    char bytes[4096];
    pollfd event{fileno(state->output.get()), POLLIN, 0};
    const auto wait = std::min<std::chrono::milliseconds>(time, std::chrono::hours(1));
    const int ready = poll(&event, 1, static_cast<int>(wait.count()));
    const ssize_t count = ready > 0 ? ::read(event.fd, bytes, sizeof bytes) : ready;
    if (count > 0)
        output.append(bytes, static_cast<std::size_t>(count));
    else if (count < 0 && errno != EINTR)
        throw callFailure("the output of a child process cannot be read");
    else if (ready > 0 && count == 0)
        state->output.reset();
    return true;
}

ChildProcess::End ChildProcess::end() const noexcept {
    const bool crashed = WIFSIGNALED(state->status);
    return {crashed,
            static_cast<std::uint32_t>(crashed ? WTERMSIG(state->status) : WEXITSTATUS(state->status))};
}

std::string crashText(std::uint32_t code) {
    const char* const name = strsignal(static_cast<int>(code));
    return "signal " + std::to_string(code) + (name != nullptr ? std::string(" (") + name + ")" : "");
}

std::vector<std::string> commandLineArguments(int argc, const char* const* argv) {
    return std::vector<std::string>(argv + 1, argv + argc);
}

bool isErrorTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

Console::Console() noexcept
    : colourOnOutput(showsColour(STDOUT_FILENO)), colourOnError(showsColour(STDERR_FILENO)) {}

Console::~Console() = default;

StopRequest::StopRequest() {
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, askToStop);
    std::signal(SIGPIPE, SIG_IGN);
}

StopRequest::~StopRequest() {
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE})
        std::signal(signal, SIG_DFL);
}

bool StopRequest::isMade() noexcept {
    return stopRequested != 0;
}

bool isReaderGone() noexcept {
    pollfd output = {STDOUT_FILENO, 0, 0}; // only that it broke
    return poll(&output, 1, 0) > 0;
}

const char* const libraryFileName = "libvykeldevenum.so";
const bool librariesArePe = false;

std::string systemVersion() {
    utsname system = {};
    uname(&system);
    return std::string(system.sysname) + " " + system.release;
}

FileVersion fileVersion(const std::string&) {
    return {};
}

bool isOrdinaryFile(const std::string& path) {
    struct stat status = {};
    return stat(winhost::hostPath(path).c_str(), &status) != 0 ||
           S_ISREG(status.st_mode); // a missing one keeps nobody waiting
}

std::string ordinaryWriters(const std::string& path, Guarded kind) {
    struct stat status = {};
    // A mode that lets users make files in a folder says no more.
    if (kind == Guarded::RegistryKey || kind == Guarded::SharedFolder ||
        stat(winhost::hostPath(path).c_str(), &status) != 0)
        return {};
    const bool isSticky =
        kind == Guarded::Folder && (status.st_mode & S_ISVTX) != 0; // nobody replaces a file
    return (status.st_mode & S_IWOTH) != 0 && !isSticky ? "all users" : "";
}

bool isAdministrator(PSID owner) {
    const uid_t user = *static_cast<const uid_t*>(owner);
    return user == 0 || user == geteuid();
}

std::optional<std::string> findImport(const std::string&) {
    return "";
}

} // namespace vykeldev
