#ifndef VYKELDEV_CHILD_CHILDPROCESS_H
#define VYKELDEV_CHILD_CHILDPROCESS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Runs this tool once more as a child, so that whatever a plug-in does there (crash, hang, exit, corrupt its
/// memory) is an observation and no accident. ChildProcessWindows.cpp and ChildProcessHost.cpp.
namespace vykeldev {

/// How a child ended.
struct ChildOutcome {
    enum class End {
        Exited,  ///< By itself, with an exit code.
        Crashed, ///< By an exception of the system (Windows) or a signal (host).
        TimedOut ///< It was still running when its time was over, and was killed.
    };
    End end = End::Exited;
    std::uint32_t code = 0; ///< The exit code, the exception's code or the signal's number.
    std::chrono::milliseconds duration{0};
};

/// Starts this program with `arguments` (UTF-8), hands each line that it writes to standard output to
/// `onLine` (without line end, on the calling thread, as soon as it is there; of a line of more than 64 KiB
/// the beginning), and kills it, with every process that it started, when `limit` is over. Its standard error
/// is dropped. Throws Failure when it cannot be started, and what `onLine` throws, the child then being
/// killed.
ChildOutcome runChild(const std::vector<std::string>& arguments, std::chrono::milliseconds limit,
                      const std::function<void(const std::string& line)>& onLine);

/// The same, but `limit` begins anew with each line for which `onLine` returns true: it is the time that the
/// child may take without a sign of progress.
ChildOutcome runChildWhileItProgresses(const std::vector<std::string>& arguments,
                                       std::chrono::milliseconds limit,
                                       const std::function<bool(const std::string& line)>& onLine);

/// A crash as text: "exception 0xC0000005" or "signal 11", with its usual name where it has one.
std::string crashText(std::uint32_t code);

} // namespace vykeldev

#endif
