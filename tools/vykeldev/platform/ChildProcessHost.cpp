#include "child/ChildProcess.h"

#include "child/LineSplitter.h"
#include "child/TimeLimit.h"
#include "support/Failure.h"
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vykeldev {
namespace {

using Clock = std::chrono::steady_clock;

struct Descriptor {
    int number = -1;
    ~Descriptor() { close(); }
    void close() noexcept {
        if (number >= 0)
            ::close(number);
        number = -1;
    }
};

/// A child in a process group of its own; killed and reaped at the latest when this object ends.
class Child {
public:
    explicit Child(pid_t process) : pid(process) {}
    ~Child() { kill(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Waits for the child's end. False when the time is over first.
    bool endsWithin(const TimeLimit& time) noexcept {
        while (waitpid(pid, &status, WNOHANG) == 0) {
            if (time.isOver())
                return false;
            usleep(1000); // it has closed its output, so its end is near
        }
        ::kill(-pid, SIGKILL); // what the child itself started
        pid = 0;
        return true;
    }

    void kill() noexcept {
        if (pid <= 0)
            return;
        ::kill(-pid, SIGKILL);
        while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        pid = 0;
    }

    int waitStatus() const noexcept { return status; }

private:
    pid_t pid;
    int status = 0;
};

[[noreturn]] void becomeTool(const std::vector<std::string>& arguments, int output, pid_t parent) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL); // nobody else would end a child that hangs
    if (getppid() != parent)
        _exit(127);
    std::string program = "/proc/self/exe";
    std::vector<char*> pointers{program.data()};
    std::vector<std::string> copies = arguments;
    for (auto& argument : copies)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    execv(program.c_str(), pointers.data());
    _exit(127);
}

/// Reads until the child closes its output. False when the time is over first.
bool readAll(int input, const TimeLimit& time, LineSplitter& lines) {
    while (!time.isOver()) {
        pollfd event{input, POLLIN, 0};
        const auto wait = std::min<std::chrono::milliseconds>(time.left(), std::chrono::hours(1));
        const int ready = poll(&event, 1, static_cast<int>(wait.count()));
        if (ready == 0)
            continue;
        char bytes[4096];
        const ssize_t count = ready > 0 ? read(input, bytes, sizeof bytes) : -1;
        if (count == 0) {
            lines.end();
            return true;
        }
        if (count > 0)
            lines.add(bytes, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            throw Failure("the output of a child process cannot be read", std::strerror(errno), "");
    }
    return false;
}

} // namespace

ChildOutcome runChildWhileItProgresses(const std::vector<std::string>& arguments,
                                       std::chrono::milliseconds limit,
                                       const std::function<bool(const std::string&)>& onLine) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw Failure("a child process cannot be started", std::strerror(errno), "");
    const Descriptor input{ends[0]};
    Descriptor output{ends[1]};
    const Clock::time_point start = Clock::now();
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0)
        throw Failure("a child process cannot be started", std::strerror(errno), "");
    if (pid == 0)
        becomeTool(arguments, output.number, parent);
    Child child(pid);
    setpgid(pid, pid); // in both processes, whichever comes first
    output.close();
    TimeLimit time(limit);
    LineSplitter lines([&](const std::string& line) {
        if (onLine(line))
            time.restart();
    });
    const bool inTime = readAll(input.number, time, lines) && child.endsWithin(time);
    child.kill();
    const int status = child.waitStatus();
    ChildOutcome outcome;
    outcome.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (!inTime) {
        outcome.end = ChildOutcome::End::TimedOut;
    } else if (WIFSIGNALED(status)) {
        outcome.end = ChildOutcome::End::Crashed;
        outcome.code = static_cast<std::uint32_t>(WTERMSIG(status));
    } else {
        outcome.code = static_cast<std::uint32_t>(WEXITSTATUS(status));
    }
    return outcome;
}

std::string crashText(std::uint32_t code) {
    const char* const name = strsignal(static_cast<int>(code));
    return "signal " + std::to_string(code) + (name != nullptr ? std::string(" (") + name + ")" : "");
}

} // namespace vykeldev
