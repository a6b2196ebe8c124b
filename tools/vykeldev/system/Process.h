#ifndef VYKELDEV_SYSTEM_PROCESS_H
#define VYKELDEV_SYSTEM_PROCESS_H

#include "vybase/owners.h"
#include "vytpl/NonCopyable.h"
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>
#include <windows.h>

/// This process, and this program once more as a child process.
namespace vykeldev {

/// What this process holds of the system.
struct Usage {
    std::uint64_t memory;  ///< Bytes that no other process shares.
    std::uint64_t handles; ///< Open handles; 0 when they cannot be counted.
};
Usage usageOfThisProcess();

/// Keeps the system from showing, asking or storing anything when this process crashes or meets a bad file.
void suppressCrashDialogs() noexcept;

/// Ends this process with exit code 0 and calls nothing of it, nor of a plug-in, any more.
[[noreturn]] inline void exitImmediately() noexcept {
    TerminateProcess(GetCurrentProcess(), 0);
    std::abort(); // not reached
}

/// Unloads a library. A crash in that ends this process, also where the system would hide it.
void unload(HMODULE library) noexcept;

/// A second stream to standard output, which stays open when a plug-in closes the first one.
vybase::FileStream duplicateOutput();

/// This program once more, in a child process whose standard output the parent reads; its standard error is
/// dropped. The child and every process that it started end with this object, and when this process is
/// killed. One thread.
class ChildProcess : private vytpl::NonCopyableT<ChildProcess> {
public:
    /// Starts it with these arguments (UTF-8). Throws Failure.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    ~ChildProcess();

    /// Waits for output for at most `time` and appends what there is. False when the child has ended and its
    /// output has been read. Throws Failure.
    bool read(std::string& output, std::chrono::milliseconds time);

    /// How it ended, after read() returned false: by an exception of the system (Windows) or a signal (host);
    /// and the exit code, the exception's code or the signal's number.
    struct End {
        bool crashed;
        std::uint32_t code;
    };
    End end() const noexcept;

private:
    struct State;
    const std::unique_ptr<State> state;
};

/// A crash as text: "exception 0xC0000005" or "signal 11", with its usual name where it has one.
std::string crashText(std::uint32_t code);

} // namespace vykeldev

#endif
