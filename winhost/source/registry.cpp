#include "winhost/registry.h"

#include "faultCheck.h"
#include "registryStore.h"
#include <algorithm>

/// A handle keeps the path of its key, not the key: the file may change, and then the key may be gone.
struct HKEY__ {
    std::u16string path;
    REGSAM access;
};

using winhost::Call;
using winhost::RegistryKey;
using winhost::RegistryValue;

namespace {

LSTATUS faultStatus(Call call) noexcept {
    return static_cast<LSTATUS>(winhost::faultOf(call));
}

std::u16string_view viewOf(LPCWSTR text) noexcept {
    return text != nullptr ? text : u"";
}

std::u16string pathOf(HKEY key, std::u16string_view subkey = {}) {
    std::u16string path = key == HKEY_LOCAL_MACHINE ? u"HKEY_LOCAL_MACHINE" : key->path;
    return subkey.empty() ? path : path.append(1, u'\\').append(subkey);
}

/// The common part of all calls that read: runs `use` on the key of a handle, as the registry is now.
template <class Use>
LSTATUS readKey(Call call, HKEY key, Use use) noexcept {
    if (const LSTATUS fault = faultStatus(call))
        return fault;
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    return winhost::guardMemory(LSTATUS{ERROR_NOT_ENOUGH_MEMORY}, [&]() -> LSTATUS {
        const winhost::RegistrySnapshot registry = winhost::registrySnapshot();
        if (registry == nullptr)
            return ERROR_BADDB;
        const RegistryKey* const found = registry->find(pathOf(key));
        return found == nullptr ? ERROR_KEY_DELETED : use(*found);
    });
}

/// The common part of all calls that write: checks that the handle has the right, runs `change` on its key
/// and stores the registry.
template <class Change>
LSTATUS changeKey(Call call, HKEY key, REGSAM right, Change change) noexcept {
    if (const LSTATUS fault = faultStatus(call))
        return fault;
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    if (key != HKEY_LOCAL_MACHINE && (key->access & right) != right)
        return ERROR_ACCESS_DENIED;
    return winhost::guardMemory(LSTATUS{ERROR_NOT_ENOUGH_MEMORY}, [&]() -> LSTATUS {
        const std::u16string path = pathOf(key);
        return winhost::changeRegistry([&](RegistryKey& root) -> LSTATUS {
            return root.find(path) == nullptr ? ERROR_KEY_DELETED : change(root.create(path));
        });
    });
}

void storeHandle(std::u16string path, REGSAM access, PHKEY result) {
    *result = new HKEY__{std::move(path), access};
    winhost::countResources(+1);
}

/// With null data, only the size. With too small a buffer, ERROR_MORE_DATA and the size needed.
LSTATUS copyData(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) noexcept {
    if (type != nullptr)
        *type = value.type;
    if (size == nullptr)
        return data == nullptr ? ERROR_SUCCESS : ERROR_INVALID_PARAMETER;
    const std::size_t room = *size;
    *size = static_cast<DWORD>(value.bytes.size());
    if (data != nullptr && room < value.bytes.size())
        return ERROR_MORE_DATA;
    if (data != nullptr)
        std::copy(value.bytes.begin(), value.bytes.end(), data);
    return ERROR_SUCCESS;
}

} // namespace

extern "C" {

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD, REGSAM access, PHKEY result) {
    return readKey(Call::RegOpenKeyExW, key, [&](const RegistryKey& parent) -> LSTATUS {
        if (parent.find(viewOf(subkey)) == nullptr)
            return ERROR_FILE_NOT_FOUND;
        storeHandle(pathOf(key, viewOf(subkey)), access, result);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR, LPDWORD, LPDWORD, LPDWORD subkeys, LPDWORD, LPDWORD, LPDWORD,
                         LPDWORD, LPDWORD, LPDWORD, FILETIME*) {
    return readKey(Call::RegQueryInfoKeyW, key, [&](const RegistryKey& found) -> LSTATUS {
        *subkeys = static_cast<DWORD>(found.subkeys().size());
        return ERROR_SUCCESS;
    });
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD, LPWSTR, LPDWORD,
                      FILETIME*) {
    return readKey(Call::RegEnumKeyExW, key, [&](const RegistryKey& found) -> LSTATUS {
        if (index >= found.subkeys().size())
            return ERROR_NO_MORE_ITEMS;
        const std::u16string& subkey = found.subkeys()[index].name();
        if (*nameLength <= subkey.size()) // no room for the terminator, which the length does not count
            return ERROR_MORE_DATA;
        name[subkey.copy(name, subkey.size())] = u'\0';
        *nameLength = static_cast<DWORD>(subkey.size());
        return ERROR_SUCCESS;
    });
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    return readKey(Call::RegQueryValueExW, key, [&](const RegistryKey& found) -> LSTATUS {
        const RegistryValue* const value = found.findValue(viewOf(name));
        return value == nullptr ? ERROR_FILE_NOT_FOUND : copyData(*value, type, data, size);
    });
}

LSTATUS RegCloseKey(HKEY key) {
    if (key == nullptr)
        return ERROR_INVALID_HANDLE;
    if (key != HKEY_LOCAL_MACHINE) {
        delete key;
        winhost::countResources(-1);
    }
    return faultStatus(Call::RegCloseKey);
}

LSTATUS RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD, LPWSTR, DWORD, REGSAM access,
                        const LPSECURITY_ATTRIBUTES, PHKEY result, LPDWORD) {
    const LSTATUS status =
        changeKey(Call::RegCreateKeyExW, key, KEY_CREATE_SUB_KEY, [&](RegistryKey& parent) -> LSTATUS {
            parent.create(viewOf(subkey));
            return ERROR_SUCCESS;
        });
    if (status != ERROR_SUCCESS)
        return status;
    return winhost::guardMemory(LSTATUS{ERROR_NOT_ENOUGH_MEMORY}, [&]() -> LSTATUS {
        storeHandle(pathOf(key, viewOf(subkey)), access, result);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegSetKeyValueW(HKEY key, LPCWSTR subkey, LPCWSTR name, DWORD type, LPCVOID data, DWORD size) {
    return changeKey(Call::RegSetKeyValueW, key, KEY_SET_VALUE, [&](RegistryKey& found) -> LSTATUS {
        const auto* const bytes = static_cast<const BYTE*>(data);
        found.create(viewOf(subkey)).setValue({std::u16string(viewOf(name)), type, {bytes, bytes + size}});
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR subkey) {
    return changeKey(Call::RegDeleteTreeW, key, 0, [&](RegistryKey& parent) -> LSTATUS {
        return parent.remove(viewOf(subkey)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}
}
