#include "winhost/modules.h"

#include "faultCheck.h"
#include "HostPath.h"
#include "textConversion.h"
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

using winhost::Call;

namespace {

/// The absolute path of a module, or of the program for null. On failure false, with the last error set.
bool findModulePath(HMODULE module, char (&path)[PATH_MAX]) noexcept {
    const link_map* map = nullptr;
    if (module != nullptr && ::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return false;
    }
    const bool program = map == nullptr || map->l_name[0] == '\0';
    if (::realpath(program ? "/proc/self/exe" : map->l_name, path) == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return false;
    }
    return true;
}

} // namespace

extern "C" {

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE, DWORD) {
    if (winhost::fails(Call::LoadLibraryExW))
        return nullptr;
    const winhost::HostPath file(path);
    if (::access(file.c_str(), F_OK) != 0) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    char absolute[PATH_MAX]; // with a bare name, dlopen would search other folders
    void* const module =
        ::realpath(file.c_str(), absolute) == nullptr ? nullptr : ::dlopen(absolute, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr)
        SetLastError(ERROR_BAD_EXE_FORMAT);
    else
        winhost::countResources(+1);
    return static_cast<HMODULE>(module);
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
    if (winhost::fails(Call::GetProcAddress))
        return nullptr;
    void* const address = ::dlsym(module, name);
    if (address == nullptr)
        SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(address);
}

BOOL FreeLibrary(HMODULE module) {
    const bool freed = module != nullptr && ::dlclose(module) == 0;
    winhost::countResources(freed ? -1 : 0);
    if (!freed)
        SetLastError(ERROR_INVALID_HANDLE);
    return freed && !winhost::fails(Call::FreeLibrary) ? TRUE : FALSE;
}

BOOL GetModuleHandleExW(DWORD, LPCWSTR address, HMODULE* module) {
    if (winhost::fails(Call::GetModuleHandleExW))
        return FALSE;
    Dl_info info = {};
    void* map = nullptr;
    void* found = nullptr;
    if (::dladdr1(address, &info, &map, RTLD_DL_LINKMAP) != 0) {
        const char* const name = static_cast<const link_map*>(map)->l_name; // empty for the program
        found = ::dlopen(*name == '\0' ? nullptr : name, RTLD_NOW | RTLD_NOLOAD);
    }
    if (found == nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    ::dlclose(found); // the caller asks for no reference of its own
    *module = static_cast<HMODULE>(found);
    return TRUE;
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) {
    char path[PATH_MAX];
    if (winhost::fails(Call::GetModuleFileNameW) || !findModulePath(module, path))
        return 0;
    const std::size_t length = winhost::utf16FromUtf8(path, buffer, size).units;
    if (length >= size) {
        if (size > 0)
            buffer[size - 1] = u'\0';
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }
    buffer[length] = u'\0';
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(length);
}
}
