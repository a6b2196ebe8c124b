// A custom action of the installer: runs "vykeldev setup" as the system and gives what it says to the
// installer, which shows it and writes it to its log. Otherwise only a console would have shown why an
// installation was rolled back.

#include <windows.h>
// After windows.h, which they need.
#include <msi.h>
#include <msiquery.h>
#include <string>

namespace {

/// The path of the tool, which the installer hands to a deferred action.
std::wstring toolPath(MSIHANDLE installation) {
    std::wstring path(32768, L'\0'); // no path is longer
    auto length = static_cast<DWORD>(path.size());
    const UINT error = MsiGetPropertyW(installation, L"CustomActionData", path.data(), &length);
    path.resize(error == ERROR_SUCCESS ? length : 0);
    return path;
}

/// Has the installer log a text, or also show it as the cause of a failure.
void tell(MSIHANDLE installation, INSTALLMESSAGE kind, const std::string& utf8) {
    std::wstring text(utf8.size(), L'\0'); // UTF-16 needs no more units
    text.resize(static_cast<std::size_t>(MultiByteToWideChar(
        CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(), static_cast<int>(text.size()))));
    const MSIHANDLE record = MsiCreateRecord(1);
    MsiRecordSetStringW(record, 0, L"[1]");
    MsiRecordSetStringW(record, 1, text.c_str());
    MsiProcessMessage(installation, kind, record);
    MsiCloseHandle(record);
}

/// Runs the tool and appends what it writes to `output`. Returns its exit code, or the system's error.
DWORD runTool(const std::wstring& path, std::string& output) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    if (!CreatePipe(&reading, &writing, &inherited, 0))
        return GetLastError();
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writing;
    startup.hStdError = writing;
    PROCESS_INFORMATION process = {};
    std::wstring command = L'"' + path + L"\" setup";
    DWORD code = ERROR_SUCCESS;
    if (!CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startup, &process))
        code = GetLastError();
    CloseHandle(writing); // so that the reading ends when the tool does
    char bytes[4096];
    for (DWORD count = 0; ReadFile(reading, bytes, sizeof bytes, &count, nullptr) && count != 0;)
        output.append(bytes, count);
    CloseHandle(reading);
    if (process.hProcess == nullptr)
        return code;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

} // namespace

/// What the installer calls. ERROR_INSTALL_FAILURE makes it roll back.
extern "C" __declspec(dllexport) UINT __stdcall runSetup(MSIHANDLE installation) {
    std::string output;
    const DWORD code = runTool(toolPath(installation), output);
    if (code == ERROR_SUCCESS) {
        tell(installation, INSTALLMESSAGE_INFO, output);
        return ERROR_SUCCESS;
    }
    tell(installation, static_cast<INSTALLMESSAGE>(INSTALLMESSAGE_ERROR | MB_OK | MB_ICONERROR),
         "This machine could not be prepared, so nothing is installed (vykeldev setup: " +
             std::to_string(code) + "). Remove the cause and run this installer again.\r\n" + output);
    return ERROR_INSTALL_FAILURE;
}
