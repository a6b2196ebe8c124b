#include "winhost/registry.h"
#include "faultCheck.h"
#include "registryStore.h"
#include <algorithm>

// A key's handle keeps its path, not the key: the file may change under it, and then the key may be gone.
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

/// What every reading call does: runs `use` on the key of a handle, as the registry is now.
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

/// What every changing call does: runs `change` on the key of a handle that has the right, and stores the
/// result.
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

void giveHandle(std::u16string path, REGSAM access, PHKEY result) {
    *result = new HKEY__{std::move(path), access};
    winhost::countResources(+1);
}

/// A name needs room for its terminator; the length given back does not count it.
LSTATUS giveName(std::u16string_view name, LPWSTR buffer, LPDWORD length) noexcept {
    if (*length <= name.size())
        return ERROR_MORE_DATA;
    buffer[name.copy(buffer, name.size())] = u'\0';
    *length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

/// Null data asks for the size; too little room gives the size needed and nothing else.
LSTATUS giveData(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) noexcept {
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

void giveCount(LPDWORD out, std::size_t count) noexcept {
    if (out != nullptr)
        *out = static_cast<DWORD>(count);
}

/// The largest measure of the elements, 0 for none.
template <class Elements, class Measure>
std::size_t largest(const Elements& elements, Measure measure) noexcept {
    std::size_t result = 0;
    for (const auto& element : elements)
        result = std::max(result, measure(element));
    return result;
}

} // namespace

extern "C" {

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD, REGSAM access, PHKEY result) {
    return readKey(Call::RegOpenKeyExW, key, [&](const RegistryKey& parent) -> LSTATUS {
        if (parent.find(viewOf(subkey)) == nullptr)
            return ERROR_FILE_NOT_FOUND;
        giveHandle(pathOf(key, viewOf(subkey)), access, result);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegQueryInfoKeyW(HKEY key, LPWSTR className, LPDWORD classLength, LPDWORD, LPDWORD subkeys,
                         LPDWORD longestSubkey, LPDWORD longestClass, LPDWORD values,
                         LPDWORD longestValueName, LPDWORD largestValue, LPDWORD security,
                         LPFILETIME lastWrite) {
    return readKey(Call::RegQueryInfoKeyW, key, [&](const RegistryKey& found) -> LSTATUS {
        giveCount(subkeys, found.subkeys().size());
        giveCount(longestSubkey,
                  largest(found.subkeys(), [](const RegistryKey& subkey) { return subkey.name().size(); }));
        giveCount(values, found.values().size());
        giveCount(longestValueName,
                  largest(found.values(), [](const RegistryValue& value) { return value.name.size(); }));
        giveCount(largestValue,
                  largest(found.values(), [](const RegistryValue& value) { return value.bytes.size(); }));
        giveCount(longestClass, 0);
        giveCount(security, 0);
        if (lastWrite != nullptr)
            *lastWrite = {};
        return className == nullptr ? LSTATUS{ERROR_SUCCESS} : giveName(u"", className, classLength);
    });
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD, LPWSTR className,
                      LPDWORD classLength, LPFILETIME lastWrite) {
    return readKey(Call::RegEnumKeyExW, key, [&](const RegistryKey& found) -> LSTATUS {
        if (index >= found.subkeys().size())
            return ERROR_NO_MORE_ITEMS;
        if (lastWrite != nullptr)
            *lastWrite = {};
        if (className != nullptr)
            giveName(u"", className, classLength);
        return giveName(found.subkeys()[index].name(), name, nameLength);
    });
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    return readKey(Call::RegQueryValueExW, key, [&](const RegistryKey& found) -> LSTATUS {
        const RegistryValue* const value = found.findValue(viewOf(name));
        return value == nullptr ? ERROR_FILE_NOT_FOUND : giveData(*value, type, data, size);
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
                        const LPSECURITY_ATTRIBUTES, PHKEY result, LPDWORD disposition) {
    DWORD found = REG_OPENED_EXISTING_KEY;
    const LSTATUS status =
        changeKey(Call::RegCreateKeyExW, key, KEY_CREATE_SUB_KEY, [&](RegistryKey& parent) -> LSTATUS {
            found = parent.find(viewOf(subkey)) == nullptr ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
            parent.create(viewOf(subkey));
            return ERROR_SUCCESS;
        });
    if (status != ERROR_SUCCESS)
        return status;
    giveCount(disposition, found);
    return winhost::guardMemory(LSTATUS{ERROR_NOT_ENOUGH_MEMORY}, [&]() -> LSTATUS {
        giveHandle(pathOf(key, viewOf(subkey)), access, result);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegSetValueExW(HKEY key, LPCWSTR name, DWORD, DWORD type, const BYTE* data, DWORD size) {
    return changeKey(Call::RegSetValueExW, key, KEY_SET_VALUE, [&](RegistryKey& found) -> LSTATUS {
        found.setValue({std::u16string(viewOf(name)), type, std::vector<BYTE>(data, data + size)});
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteTreeW(HKEY key, LPCWSTR subkey) {
    return changeKey(Call::RegDeleteTreeW, key, 0, [&](RegistryKey& parent) -> LSTATUS {
        return parent.remove(viewOf(subkey)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
}
}
