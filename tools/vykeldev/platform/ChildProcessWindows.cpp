#include "child/ChildProcess.h"

#include "child/LineSplitter.h"
#include "child/TimeLimit.h"
#include "support/Failure.h"
#include "support/Text.h"
#include "vybase/owners.h"
#include <cstdio>
#include <iterator>
#include <utility>

namespace vykeldev {
namespace {

using Clock = std::chrono::steady_clock;

using vybase::Handle;

constexpr DWORD pipeSize = 65536; // enough for what is written between two looks

[[noreturn]] void cannotStart(DWORD error) {
    throw systemFailure("starting a child process", error, "");
}

/// An argument as CommandLineToArgvW reads it back: backslashes count only before a quote.
WideString quoted(const WideString& argument) {
    WideString result(1, L'"');
    std::size_t backslashes = 0;
    for (const WCHAR unit : argument) {
        if (unit == L'"')
            result.append(backslashes + 1, L'\\');
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        result += unit;
    }
    result.append(backslashes, L'\\');
    return result += L'"';
}

WideString commandLine(const std::vector<std::string>& arguments) {
    WCHAR program[32768];
    GetModuleFileNameW(nullptr, program, static_cast<DWORD>(std::size(program)));
    WideString line = quoted(program);
    for (const auto& argument : arguments)
        line += L' ' + quoted(toWide(argument));
    return line;
}

/// A job whose processes die with it.
Handle makeJob() {
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job ||
        !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        cannotStart(GetLastError());
    return job;
}

std::pair<Handle, Handle> makePipe() {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    if (!CreatePipe(&input, &output, &inherited, pipeSize))
        cannotStart(GetLastError());
    SetHandleInformation(input, HANDLE_FLAG_INHERIT, 0);
    return {Handle(input), Handle(output)};
}

Handle openNothing() {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return Handle(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                              &inherited, OPEN_EXISTING, 0, nullptr));
}

Handle start(WideString line, HANDLE output, HANDLE job) {
    const Handle nothing = openNothing();
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nothing.get();
    startup.hStdOutput = output;
    startup.hStdError = nothing.get();
    PROCESS_INFORMATION process = {};
    // Suspended, so that nothing of it runs outside the job.
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED | CREATE_NO_WINDOW,
                        nullptr, nullptr, &startup, &process))
        cannotStart(GetLastError());
    const Handle thread(process.hThread);
    Handle owner(process.hProcess);
    if (!AssignProcessToJobObject(job, process.hProcess)) {
        const DWORD error = GetLastError();
        TerminateProcess(process.hProcess, 1);
        cannotStart(error);
    }
    ResumeThread(process.hThread);
    return owner;
}

/// Takes what is in the pipe, as long as there is time.
void readAvailable(HANDLE input, const TimeLimit& time, LineSplitter& lines) {
    char bytes[4096];
    DWORD available = 0;
    DWORD count = 0;
    while (PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) && available != 0 &&
           !time.isOver() && ReadFile(input, bytes, sizeof bytes, &count, nullptr))
        lines.add(bytes, count);
}

} // namespace

ChildOutcome runChildWhileItProgresses(const std::vector<std::string>& arguments,
                                       std::chrono::milliseconds limit,
                                       const std::function<bool(const std::string&)>& onLine) {
    constexpr DWORD millisecondsBetweenLooks = 10; // a pipe cannot be waited for together with a process
    auto [input, output] = makePipe();
    Handle job = makeJob();
    const Clock::time_point begin = Clock::now();
    const Handle process = start(commandLine(arguments), output.get(), job.get());
    output.reset();
    TimeLimit time(limit);
    LineSplitter lines([&](const std::string& line) {
        if (onLine(line))
            time.restart();
    });
    bool ended = false;
    while (!ended && !time.isOver()) {
        ended = WaitForSingleObject(process.get(), millisecondsBetweenLooks) == WAIT_OBJECT_0;
        readAvailable(input.get(), time, lines);
    }
    ChildOutcome outcome;
    outcome.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
    job.reset();
    lines.end();
    if (!ended) {
        outcome.end = ChildOutcome::End::TimedOut;
        return outcome;
    }
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    outcome.code = code;
    // An exception that nobody handled; small negative numbers are what programs give to exit().
    if (code >= 0x80000000u && code < 0xF0000000u)
        outcome.end = ChildOutcome::End::Crashed;
    return outcome;
}

std::string crashText(std::uint32_t code) {
    struct Name {
        std::uint32_t code;
        const char* name;
    };
    static constexpr Name names[] = {
        {0x80000003, "breakpoint"},          {0xC0000005, "access violation"},
        {0xC000001D, "illegal instruction"}, {0xC0000094, "division by zero"},
        {0xC00000FD, "stack overflow"},      {0xC0000409, "fail fast"},
        {0xC0000374, "heap corruption"},     {0xE06D7363, "uncaught C++ exception"}};
    char text[32];
    std::snprintf(text, sizeof text, "exception 0x%08X", static_cast<unsigned>(code));
    for (const Name& known : names)
        if (known.code == code)
            return std::string(text) + " (" + known.name + ")";
    return text;
}

} // namespace vykeldev
