#include "platform/StopRequest.h"

#include "support/Failure.h"
#include <atomic>
#include <windows.h>

namespace vykeldev {
namespace {

// The system calls the handler on a thread of its own, without any argument of ours.
HANDLE stopEvent = nullptr;
std::atomic<bool> asked{false};

BOOL WINAPI askToStop(DWORD event) {
    const bool again = asked.exchange(true);
    SetEvent(stopEvent);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE); // window closed, logging off: the process is killed as soon as this returns
    return again ? FALSE : TRUE;
}

} // namespace

StopRequest::StopRequest() {
    asked = false;
    stopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (stopEvent == nullptr || !SetConsoleCtrlHandler(askToStop, TRUE))
        throw systemFailure("preparing for Ctrl-C", GetLastError(), "");
}

StopRequest::~StopRequest() {
    SetConsoleCtrlHandler(askToStop, FALSE); // the event stays: the handler may be running
}

bool StopRequest::waitFor(std::chrono::milliseconds time) noexcept {
    return WaitForSingleObject(stopEvent, static_cast<DWORD>(time.count())) == WAIT_OBJECT_0;
}

bool isReaderGone() noexcept {
    const DWORD error = GetLastError(); // the C runtime tells these three as different errno values
    return error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
}

} // namespace vykeldev
