#include "platform/DoctorPlatform.h"

#include "support/Failure.h"
#include "support/Files.h"
#include "support/Paths.h"
#include "support/Text.h"
#include <io.h>
#include <vector>
#include <windows.h>

namespace vykeldev::doctor {
namespace {

bool beginsWith(const WideString& text, const WideString& beginning) {
    const auto length = static_cast<int>(beginning.size());
    return text.size() >= beginning.size() &&
           CompareStringOrdinal(text.c_str(), length, beginning.c_str(), length, TRUE) == CSTR_EQUAL;
}

/// Names that stand for a set of functions, not for a file; the loader itself knows where those are.
bool isApiSet(const WideString& name) {
    return beginsWith(name, L"api-ms-") || beginsWith(name, L"ext-ms-");
}

bool isInSystemFolder(const WideString& path) {
    WCHAR folder[MAX_PATH] = {};
    const UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    return length != 0 && length < MAX_PATH && beginsWith(path, WideString(folder) + L'\\');
}

} // namespace

std::optional<LibraryImage> readNativeImage(std::string_view bytes) {
    return readPeImage(bytes);
}

std::optional<std::string> findImport(const std::string& name) {
    const WideString file = toWide(name);
    if (isApiSet(file) || GetModuleHandleW(file.c_str()) != nullptr)
        return "";
    // The loader's way for libraries that a library asks for; the folder of the latter is not on it.
    WideString path(maxPathBytes, L'\0');
    const DWORD length =
        SearchPathW(nullptr, file.c_str(), L".dll", static_cast<DWORD>(path.size()), path.data(), nullptr);
    if (length == 0 || length >= path.size())
        return std::nullopt;
    path.resize(length);
    return isInSystemFolder(path) ? "" : toUtf8(path);
}

bool isOrdinaryFile(const std::string& path) {
    try { // names such as NUL and COM1 lead to a device, whatever folder they seem to lie in
        return absolutePath(path).rfind("\\\\.\\", 0) != 0;
    } catch (const Failure&) {
        return true; // whoever opens it will see
    }
}

std::string fileIdentity(const std::string& path) {
    BY_HANDLE_FILE_INFORMATION facts = {};
    const FileHandle file = isOrdinaryFile(path) ? openFile(path, 0, OPEN_EXISTING) : nullptr;
    if (!file || !GetFileInformationByHandle(file.get(), &facts) ||
        (facts.nFileIndexHigh == 0 && facts.nFileIndexLow == 0)) // a file system without numbers
        return {};
    return std::to_string(facts.dwVolumeSerialNumber) + ':' + std::to_string(facts.nFileIndexHigh) + ':' +
           std::to_string(facts.nFileIndexLow);
}

bool makeTemporaryFile(const std::string& path) {
    const HANDLE file = CreateFileW(toWide(path).c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file);
}

vykel::FileStream duplicateOutput() {
    return vykel::FileStream{_fdopen(_dup(_fileno(stdout)), "w")};
}

void silenceCrashes() noexcept {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

bool isErrorTerminal() noexcept {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

std::string systemVersion() {
    using RtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof version;
    // GetVersionEx answers what the program's manifest knows of, not what the system is.
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    if (function != nullptr)
        reinterpret_cast<RtlGetVersion>(reinterpret_cast<void (*)()>(function))(&version);
    return "Windows " + std::to_string(version.dwMajorVersion) + '.' +
           std::to_string(version.dwMinorVersion) + '.' + std::to_string(version.dwBuildNumber);
}

std::string fileVersion(const std::string& path) {
    const WideString file = toWide(path);
    DWORD ignored = 0;
    std::vector<char> data(GetFileVersionInfoSizeW(file.c_str(), &ignored));
    void* block = nullptr;
    UINT size = 0;
    if (data.empty() || !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(data.size()), data.data()) ||
        !VerQueryValueW(data.data(), L"\\", &block, &size) || size < sizeof(VS_FIXEDFILEINFO))
        return {};
    const auto* const info = static_cast<const VS_FIXEDFILEINFO*>(block);
    std::string text;
    for (const DWORD part : {info->dwFileVersionMS >> 16, info->dwFileVersionMS & 0xFFFF,
                             info->dwFileVersionLS >> 16, info->dwFileVersionLS & 0xFFFF})
        text += (text.empty() ? "" : ".") + std::to_string(part);
    return text;
}

} // namespace vykeldev::doctor
