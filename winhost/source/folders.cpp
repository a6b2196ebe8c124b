#include "descriptors.h"
#include "errorNumbers.h"
#include "faultCheck.h"
#include "HostPath.h"
#include "registryStore.h"
#include "securityDescriptor.h"
#include "shlobj.h"
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

using winhost::Call;
using winhost::HostPath;

namespace {

constexpr HRESULT hresultOf(DWORD error) noexcept {
    return static_cast<HRESULT>(0x80070000U | error);
}

/// The common application data folder that the registry names; empty when it names none.
std::u16string redirectedFolder() {
    const winhost::RegistrySnapshot registry = winhost::registrySnapshot();
    if (registry == nullptr)
        return {};
    const winhost::RegistryKey* const folders =
        registry->find(u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer"
                       u"\\User Shell Folders");
    const winhost::RegistryValue* const value =
        folders == nullptr ? nullptr : folders->findValue(u"Common AppData");
    if (value == nullptr)
        return {};
    std::u16string text(value->bytes.size() / sizeof(WCHAR), u'\0');
    if (!text.empty())
        std::memcpy(text.data(), value->bytes.data(), text.size() * sizeof(WCHAR));
    return text.substr(0, text.find(u'\0'));
}

HRESULT findCommonAppData(LPWSTR path) {
    std::u16string folder = redirectedFolder();
    if (folder.empty() || folder == u"%ProgramData%")
        folder = u"C:\\ProgramData";
    if (folder.size() >= MAX_PATH)
        return E_FAIL;
    struct stat status = {};
    if (::stat(HostPath(folder.c_str()).c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        return hresultOf(ERROR_FILE_NOT_FOUND);
    path[folder.copy(path, folder.size())] = u'\0';
    return S_OK;
}

} // namespace

extern "C" {

BOOL CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    if (winhost::fails(Call::CreateDirectoryW))
        return FALSE;
    const HostPath folder(path);
    const mode_t mode = security == nullptr ? 0777 : winhost::modeOf(security->lpSecurityDescriptor);
    if (::mkdir(folder.c_str(), mode) == 0) {
        if (security != nullptr)
            ::chmod(folder.c_str(), mode); // whatever the process's umask says
        return TRUE;
    }
    if (errno == EEXIST)
        SetLastError(ERROR_ALREADY_EXISTS); // a file would be ERROR_FILE_EXISTS
    else
        winhost::setErrorFromErrno(folder);
    return FALSE;
}

BOOL RemoveDirectoryW(LPCWSTR path) {
    if (winhost::fails(Call::RemoveDirectoryW))
        return FALSE;
    const HostPath folder(path);
    if (winhost::isHeldOpen(folder)) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    if (::rmdir(folder.c_str()) == 0)
        return TRUE;
    winhost::setErrorFromErrno(folder);
    return FALSE;
}

HRESULT SHGetFolderPathW(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
    if (const DWORD error = winhost::faultOf(Call::SHGetFolderPathW))
        return hresultOf(error);
    if (folder != CSIDL_COMMON_APPDATA || path == nullptr)
        return E_INVALIDARG;
    return winhost::guardMemory(hresultOf(ERROR_OUTOFMEMORY), [&] { return findCommonAppData(path); });
}
}
