#include "Registrations.h"

#include "Failure.h"
#include "System.h"
#include "Text.h"
#include <utility>

namespace vykeldev {
namespace {

constexpr const char* pluginsKey = "SOFTWARE\\Morvance\\VY-KEL\\Plugins";
constexpr const char* pathValue = "EnumeratorPluginPath";
constexpr std::size_t longestName = 255; // in UTF-16 units; the registry's limit

/// An open registry key, closed at the end of its scope.
class Key {
public:
    Key() noexcept = default;
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (handle_ != nullptr) {
            RegCloseKey(handle_);
        }
    }
    HKEY get() const noexcept { return handle_; }
    HKEY* out() noexcept { return &handle_; }

private:
    HKEY handle_ = nullptr;
};

std::string explained(LSTATUS error) {
    return systemErrorText(static_cast<DWORD>(error)) + " (" + std::to_string(error) + ")";
}

Failure registryFailure(const std::string& action, LSTATUS error) {
    return systemFailure(action, static_cast<DWORD>(error), "Check the rights on this registry key.");
}

/// Reads the path of a subkey as the library does: whatever its type, up to the first 0.
Registration readRegistration(HKEY plugins, const WideString& name) {
    Registration result{toUtf8(name), std::nullopt, {}};
    Key key;
    LSTATUS error = RegOpenKeyExW(plugins, name.c_str(), 0, KEY_READ, key.out());
    WideString text;
    DWORD bytes = 0;
    if (error == ERROR_SUCCESS) {
        const WideString value = toWide(pathValue);
        do { // again when it grew meanwhile
            error = RegQueryValueExW(key.get(), value.c_str(), nullptr, nullptr, nullptr, &bytes);
            text.resize(bytes / sizeof(WCHAR) + 1);
            if (error == ERROR_SUCCESS) {
                error = RegQueryValueExW(key.get(), value.c_str(), nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(text.data()), &bytes);
            }
        } while (error == ERROR_MORE_DATA);
    }
    if (error != ERROR_SUCCESS) {
        result.problem = std::string(pathValue) + " cannot be read: " + explained(error);
        return result;
    }
    text.resize(bytes / sizeof(WCHAR));
    result.path = toUtf8(text.substr(0, text.find(WCHAR{0})));
    result.problem = pathProblem(*result.path);
    return result;
}

} // namespace

bool isRegistrationName(const std::string& name) {
    return !name.empty() && name.find('\\') == std::string::npos && toWide(name).size() <= longestName;
}

bool isAbsolutePath(const std::string& path) noexcept {
    const bool drive = path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
    return drive || path.substr(0, 2) == "\\\\" || path.substr(0, 1) == "/";
}

std::vector<Registration> readRegistrations() {
    Key plugins;
    const LSTATUS opened =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(pluginsKey).c_str(), 0, KEY_READ, plugins.out());
    if (opened == ERROR_FILE_NOT_FOUND) {
        return {};
    }
    if (opened != ERROR_SUCCESS) {
        throw registryFailure("opening the registry key of the plug-ins", opened);
    }
    std::vector<Registration> registrations;
    for (DWORD index = 0;; ++index) {
        WideString name(longestName + 1, 0);
        DWORD length = static_cast<DWORD>(name.size());
        const LSTATUS error =
            RegEnumKeyExW(plugins.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
        if (error == ERROR_SUCCESS) {
            name.resize(length);
            registrations.push_back(readRegistration(plugins.get(), name));
        } else if (error == ERROR_MORE_DATA) {
            registrations.push_back(
                {"(subkey " + std::to_string(index) + ")", std::nullopt, "the name is too long"});
        } else if (error == ERROR_NO_MORE_ITEMS) {
            return registrations;
        } else {
            throw registryFailure("listing the plug-ins", error);
        }
    }
}

void writeRegistration(const std::string& name, const std::string& path) {
    Key key;
    const WideString keyPath = toWide(std::string(pluginsKey) + "\\" + name);
    LSTATUS error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, keyPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_WRITE, nullptr, key.out(), nullptr);
    if (error == ERROR_SUCCESS) {
        const WideString text = toWide(path);
        const DWORD bytes = static_cast<DWORD>((text.size() + 1) * sizeof(WCHAR)); // with its terminator
        error = RegSetValueExW(key.get(), toWide(pathValue).c_str(), 0, REG_SZ,
                               reinterpret_cast<const BYTE*>(text.c_str()), bytes);
    }
    if (error != ERROR_SUCCESS) {
        throw registryFailure("registering '" + printable(name) + "'", error);
    }
}

void removeRegistration(const std::string& name) {
    Key plugins;
    LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(pluginsKey).c_str(), 0,
                                  KEY_READ | KEY_WRITE | DELETE, plugins.out());
    if (error == ERROR_SUCCESS) {
        error = RegDeleteTreeW(plugins.get(), toWide(name).c_str());
    }
    if (error == ERROR_FILE_NOT_FOUND) {
        throw Failure("no plug-in is registered as '" + printable(name) + "'", "",
                      "'vykeldev plugins' shows the names.");
    }
    if (error != ERROR_SUCCESS) {
        throw registryFailure("unregistering '" + printable(name) + "'", error);
    }
}

std::string pathProblem(const std::string& path) {
    if (!isAbsolutePath(path)) {
        return "the path is not absolute"; // which file it means depends on the client
    }
    const DWORD attributes = GetFileAttributesW(toWide(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return "there is no such file";
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? "this is a folder" : "";
}

} // namespace vykeldev
