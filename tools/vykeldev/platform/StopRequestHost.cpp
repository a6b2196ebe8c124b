#include "platform/StopRequest.h"

#include "support/Failure.h"
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <unistd.h>

namespace vykeldev {
namespace {

int stopPipe[2] = {-1, -1}; // a signal handler has no argument of ours

void askToStop(int) {
    const int error = errno;
    const ssize_t ignored = write(stopPipe[1], "", 1); // a full pipe says it, too
    static_cast<void>(ignored);
    errno = error;
}

void handle(int signal, void (*handler)(int), int flags) noexcept {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

} // namespace

StopRequest::StopRequest() {
    if (pipe2(stopPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        throw Failure("preparing for Ctrl-C failed", std::strerror(errno), "");
    for (const int signal : {SIGINT, SIGTERM})
        handle(signal, askToStop, SA_RESTART | static_cast<int>(SA_RESETHAND));
    handle(SIGPIPE, SIG_IGN, 0);
}

StopRequest::~StopRequest() {
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE})
        handle(signal, SIG_DFL, 0);
    close(stopPipe[0]);
    close(stopPipe[1]);
}

bool StopRequest::waitFor(std::chrono::milliseconds time) noexcept {
    pollfd sources[] = {{stopPipe[0], POLLIN, 0}, {STDOUT_FILENO, 0, 0}}; // of output, only that it broke
    const int ready = poll(sources, 2, static_cast<int>(time.count()));
    return ready > 0 || (ready < 0 && errno == EINTR && poll(sources, 1, 0) > 0);
}

bool isReaderGone() noexcept {
    return errno == EPIPE;
}

} // namespace vykeldev
