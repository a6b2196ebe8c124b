#include "system/Console.h"
#include "system/DisplayText.h"
#include "system/Failure.h"
#include "system/Files.h"
#include "system/Paths.h"
#include "system/Process.h"
#include "system/System.h"
#include "system/Text.h"
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <io.h>
#include <iostream>
#include <map>
#include <shellapi.h>
#include <shlobj.h>
#include <windows.h>
// After windows.h, which they need.
#include <aclapi.h>
#include <psapi.h>

namespace vykeldev {
namespace {

using vybase::Handle;

constexpr DWORD pipeBytes = 65536; // enough for the output between two calls of read

LONG CALLBACK endByException(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (code >= 0xC0000000u) // an error, no notice for a debugger
        TerminateProcess(GetCurrentProcess(), code);
    return EXCEPTION_CONTINUE_SEARCH;
}

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
    const std::string program = modulePath(nullptr);
    if (program.empty())
        cannotStart(GetLastError());
    WideString line = quoted(toWide(program));
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

Handle start(WideString line, HANDLE output, HANDLE job) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    const Handle nothing(CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inherited, OPEN_EXISTING, 0, nullptr));
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
    if (!AssignProcessToJobObject(job, process.hProcess) || ResumeThread(process.hThread) == DWORD(-1)) {
        const DWORD error = GetLastError();
        TerminateProcess(process.hProcess, 1);
        cannotStart(error);
    }
    return owner;
}

/// Turns on the escape sequences of a console; false when `handle` is none, or is too old for them.
bool enableColour(DWORD handle) noexcept {
    DWORD mode = 0;
    const HANDLE console = GetStdHandle(handle);
    return std::getenv("NO_COLOR") == nullptr && GetConsoleMode(console, &mode) &&
           SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

// The system calls the handler on a thread of its own, without any argument of ours.
std::atomic<bool> stopRequested{false};

BOOL WINAPI askToStop(DWORD event) {
    const bool again = stopRequested.exchange(true);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE); // window closed, logging off: the process is killed as soon as this returns
    return again ? FALSE : TRUE;
}

/// Whether it is the user of this process, and the process runs as administrator.
bool isThisAdministrator(PSID user) {
    alignas(TOKEN_USER) BYTE own[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = 0;
    HANDLE opened = nullptr;
    if (!IsUserAnAdmin() || !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
        return false;
    const Handle token(opened);
    return GetTokenInformation(opened, TokenUser, own, sizeof own, &size) &&
           EqualSid(reinterpret_cast<const TOKEN_USER*>(own)->User.Sid, user);
}

/// The group of all ordinary users that an entry of an access-control list is about, or null.
const char* ordinaryGroup(ACCESS_ALLOWED_ACE& ace) {
    if (ace.Header.AceType != ACCESS_ALLOWED_ACE_TYPE && ace.Header.AceType != ACCESS_DENIED_ACE_TYPE)
        return nullptr;
    static constexpr std::pair<WELL_KNOWN_SID_TYPE, const char*> groups[] = {
        {WinWorldSid, "Everyone"},
        {WinBuiltinUsersSid, "Users"},
        {WinAuthenticatedUserSid, "Authenticated Users"},
        {WinInteractiveSid, "INTERACTIVE"}};
    for (const auto& [group, name] : groups)
        if (IsWellKnownSid(&ace.SidStart, group))
            return name;
    return nullptr;
}

bool beginsWith(const WideString& text, const WideString& beginning) {
    const auto length = static_cast<int>(beginning.size());
    return text.size() >= beginning.size() &&
           CompareStringOrdinal(text.c_str(), length, beginning.c_str(), length, TRUE) == CSTR_EQUAL;
}

} // namespace

Usage usageOfThisProcess() {
    PROCESS_MEMORY_COUNTERS counters = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return {counters.PagefileUsage, handles}; // the private bytes; PrivateUsage is 0 under Wine
}

void suppressCrashDialogs() noexcept {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

void unload(HMODULE library) noexcept {
    void* const handler = AddVectoredExceptionHandler(1, endByException); // before the loader's own
    FreeLibrary(library);
    RemoveVectoredExceptionHandler(handler);
}

vybase::FileStream duplicateOutput() {
    return vybase::FileStream(_fdopen(_dup(_fileno(stdout)), "w"));
}

struct ChildProcess::State {
    Handle output;
    const Handle job = makeJob();
    Handle process;
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) : state(std::make_unique<State>()) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE input = nullptr;
    HANDLE output = nullptr;
    if (!CreatePipe(&input, &output, &inherited, pipeBytes))
        cannotStart(GetLastError());
    state->output.reset(input);
    const Handle childOutput(output);
    SetHandleInformation(input, HANDLE_FLAG_INHERIT, 0);
    state->process = start(commandLine(arguments), output, state->job.get());
}

ChildProcess::~ChildProcess() = default;

bool ChildProcess::read(std::string& output, std::chrono::milliseconds time) {
    constexpr std::chrono::milliseconds pollInterval(10); // a pipe cannot be waited for with a process
    const auto wait = static_cast<DWORD>(std::min(time, pollInterval).count());
    const bool ended = WaitForSingleObject(state->process.get(), wait) == WAIT_OBJECT_0;
    char bytes[4096];
    DWORD available = 0;
    DWORD count = 0;
    std::size_t total = 0;
    const HANDLE input = state->output.get();
    while (PeekNamedPipe(input, nullptr, 0, nullptr, &available, nullptr) && available != 0 &&
           total < pipeBytes && ReadFile(input, bytes, sizeof bytes, &count, nullptr)) {
        output.append(bytes, count);
        total += count;
    }
    return !ended || available != 0;
}

ChildProcess::End ChildProcess::end() const noexcept {
    DWORD code = 0;
    GetExitCodeProcess(state->process.get(), &code);
    // An exception that nobody handled; small negative numbers are what programs give to exit().
    return {code >= 0x80000000u && code < 0xF0000000u, code};
}

std::string crashText(std::uint32_t code) {
    static const std::map<std::uint32_t, const char*> names = {
        {0x80000003, "breakpoint"},          {0xC0000005, "access violation"},
        {0xC000001D, "illegal instruction"}, {0xC0000094, "division by zero"},
        {0xC00000FD, "stack overflow"},      {0xC0000409, "fail fast"},
        {0xC0000374, "heap corruption"},     {0xE06D7363, "uncaught C++ exception"}};
    char text[32];
    std::snprintf(text, sizeof text, "exception 0x%08X", static_cast<unsigned>(code));
    const auto known = names.find(code);
    return known == names.end() ? text : std::string(text) + " (" + known->second + ")";
}

std::vector<std::string> commandLineArguments(int, const char* const*) {
    int count = 0;
    const vybase::LocalMemory<LPWSTR> arguments(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> result;
    for (int i = 1; arguments && i < count; ++i)
        result.push_back(toUtf8(arguments.get()[i]));
    return result;
}

bool isErrorTerminal() noexcept {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

Console::Console() noexcept
    : colourOnOutput(enableColour(STD_OUTPUT_HANDLE)), colourOnError(enableColour(STD_ERROR_HANDLE)),
      savedCodePage(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    // Without a buffer the runtime hands a console single bytes, which it cannot show as UTF-8.
    static char outputBuffer[1 << 16];
    std::setvbuf(stdout, outputBuffer, _IOFBF, sizeof outputBuffer);
}

Console::~Console() {
    std::cout.flush();
    if (savedCodePage != 0)
        SetConsoleOutputCP(savedCodePage);
}

StopRequest::StopRequest() {
    if (!SetConsoleCtrlHandler(askToStop, TRUE))
        throw systemFailure("preparing for Ctrl-C", GetLastError(), "");
}

StopRequest::~StopRequest() {
    SetConsoleCtrlHandler(askToStop, FALSE);
}

bool StopRequest::isMade() noexcept {
    return stopRequested;
}

bool isReaderGone() noexcept {
    const DWORD error = GetLastError(); // the C runtime gives these three as different errno values
    return !std::cout &&
           (error == ERROR_NO_DATA || error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED);
}

const char* const libraryFileName = "vykeldevenum.dll";
const bool librariesArePe = true;

std::string systemVersion() {
    using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    // GetVersionEx reports the newest system that the program's manifest names, not the real one.
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    if (function != nullptr)
        reinterpret_cast<RtlGetVersion>(reinterpret_cast<void (*)()>(function))(&version);
    return concat("Windows ", version.dwMajorVersion, '.', version.dwMinorVersion, '.',
                  version.dwBuildNumber);
}

FileVersion fileVersion(const std::string& path) {
    const WideString file = toWide(path);
    DWORD ignored = 0;
    std::vector<char> data(GetFileVersionInfoSizeW(file.c_str(), &ignored));
    if (data.empty() || !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(data.size()), data.data()))
        return {};
    void* block = nullptr;
    UINT size = 0;
    FileVersion version;
    if (VerQueryValueW(data.data(), L"\\", &block, &size) && size >= sizeof(VS_FIXEDFILEINFO)) {
        const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(block);
        version.number = concat(HIWORD(info->dwFileVersionMS), '.', LOWORD(info->dwFileVersionMS), '.',
                                HIWORD(info->dwFileVersionLS), '.', LOWORD(info->dwFileVersionLS));
    }
    if (VerQueryValueW(data.data(), L"\\VarFileInfo\\Translation", &block, &size) &&
        size >= 2 * sizeof(WORD)) {
        const auto* const language =
            static_cast<const WORD*>(block); // and code page: the first texts are enough
        char name[64];
        std::snprintf(name, sizeof name, "\\StringFileInfo\\%04x%04x\\CompanyName", language[0], language[1]);
        if (VerQueryValueW(data.data(), toWide(name).c_str(), &block, &size) && size > 1)
            version.maker = toUtf8(WideString(static_cast<const WCHAR*>(block), size - 1)); // without its end
    }
    return version;
}

bool isOrdinaryFile(const std::string& path) {
    try { // names such as NUL and COM1 lead to a device, whatever folder they seem to lie in
        return absolutePath(path).rfind("\\\\.\\", 0) != 0;
    } catch (const Failure&) {
        return true; // opening it will fail
    }
}

std::string ordinaryWriters(const std::string& path, Guarded kind) {
    const bool isKey = kind == Guarded::RegistryKey;
    WideString name = toWide((isKey ? "MACHINE\\" : "") + path);
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetNamedSecurityInfoW(name.data(), isKey ? SE_REGISTRY_KEY : SE_FILE_OBJECT,
                              DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                              &descriptor) != ERROR_SUCCESS)
        return {};
    const vybase::LocalMemory<void> owner(descriptor);
    if (list == nullptr)
        return "everybody (there is no access-control list)";
    // For a key, the last two are KEY_SET_VALUE and KEY_CREATE_SUB_KEY.
    constexpr DWORD toRedirect = FILE_DELETE_CHILD | FILE_ADD_SUBDIRECTORY | FILE_WRITE_ATTRIBUTES;
    const DWORD ofKind = kind == Guarded::Folder            ? FILE_DELETE_CHILD
                         : kind == Guarded::FolderOfMissing ? FILE_ADD_FILE
                         : kind == Guarded::SharedFolder    ? toRedirect
                         : kind == Guarded::ReadOnlyFolder  ? toRedirect | FILE_ADD_FILE
                                                            : FILE_WRITE_DATA | FILE_APPEND_DATA;
    const DWORD writing = ofKind | DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;
    DWORD denied = 0;
    std::vector<std::string> writers;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!GetAce(list, i, &entry))
            continue;
        auto* const ace = static_cast<ACCESS_ALLOWED_ACE*>(entry); // a denying one has the same form
        const char* const group =
            (ace->Header.AceFlags & INHERIT_ONLY_ACE) != 0 ? nullptr : ordinaryGroup(*ace);
        if (group != nullptr && ace->Header.AceType == ACCESS_DENIED_ACE_TYPE)
            denied |= ace->Mask;
        else if (group != nullptr && (ace->Mask & writing & ~denied) != 0)
            writers.emplace_back(group);
    }
    return joined(writers, ", ");
}

bool isAdministrator(PSID owner) {
    return IsWellKnownSid(owner, WinBuiltinAdministratorsSid) || IsWellKnownSid(owner, WinLocalSystemSid) ||
           isThisAdministrator(owner);
}

std::optional<std::string> findImport(const std::string& name) {
    const WideString file = toWide(name);
    // The first two mean sets of functions, not files. The loader itself knows where those are.
    if (beginsWith(file, L"api-ms-") || beginsWith(file, L"ext-ms-") || GetModuleHandleW(file.c_str()))
        return "";
    // The loader's way for libraries that a library asks for; the folder of the latter is not on it.
    const WideString path = pathFrom([&file](LPWSTR buffer, DWORD size) {
        return SearchPathW(nullptr, file.c_str(), L".dll", size, buffer, nullptr);
    });
    if (path.empty())
        return std::nullopt;
    const WideString system = pathFrom(GetSystemDirectoryW);
    return !system.empty() && beginsWith(path, system + L'\\') ? "" : toUtf8(path);
}

} // namespace vykeldev
